# Run by cmake --install: makes web pages of the operator's guide, with cmark-gfm if it is installed. Run with
# -Ddocuments=FOLDER for the installer for Windows: makes all its pages, in that folder.
find_program(cmark cmark-gfm)
if(documents AND NOT cmark)
  message(FATAL_ERROR "There is no cmark-gfm for the pages of the installer.")
elseif(NOT cmark)
  message(STATUS "The operator's guide is installed without web pages: there is no cmark-gfm.")
  return()
endif()
set(style "body { font-family: sans-serif; max-width: 60em; margin: 2em auto; padding: 0 1em }
table { border-collapse: collapse } td, th { border: 1px solid #999; padding: 0.3em 0.6em; vertical-align: top }")
function(make_page source language page)
  execute_process(COMMAND ${cmark} --unsafe --extension table ${source} OUTPUT_VARIABLE body COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX REPLACE "<h2>For those who build it.*" "" body "${body}") # of WINDOWS.md
  string(REPLACE ".md\"" ".html\"" body "${body}")
  file(WRITE ${page}
       "<!DOCTYPE html>\n<html lang=\"${language}\">\n<head>\n<meta charset=\"utf-8\">\n<title>TarnBeacon</title>\n"
       "<style>${style}</style>\n</head>\n<body>\n${body}</body>\n</html>\n")
endfunction()
set(sources ${CMAKE_CURRENT_LIST_DIR}/../docs)
set(guide $ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/share/doc/tarnbeacon/guide)
if(documents)
  file(COPY ${sources}/guide DESTINATION ${documents} PATTERN *.md EXCLUDE)
  set(guide ${documents}/guide)
  make_page(${CMAKE_CURRENT_LIST_DIR}/windows/index.md en ${documents}/index.html)
  make_page(${sources}/WINDOWS.md en ${documents}/WINDOWS.html)
  make_page(${sources}/TYPE-INI.md en ${documents}/TYPE-INI.html)
endif()
foreach(language en ja)
  make_page(${sources}/guide/${language}.md ${language} ${guide}/${language}.html)
endforeach()
