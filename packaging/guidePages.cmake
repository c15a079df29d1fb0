# Run by cmake --install: makes web pages of the operator's guide, with cmark-gfm if it is installed.
find_program(cmark cmark-gfm)
if(NOT cmark)
  message(STATUS "The operator's guide is installed without web pages: there is no cmark-gfm.")
  return()
endif()
set(style "body { font-family: sans-serif; max-width: 60em; margin: 2em auto; padding: 0 1em }
table { border-collapse: collapse } td, th { border: 1px solid #999; padding: 0.3em 0.6em; vertical-align: top }")
foreach(language en ja)
  execute_process(COMMAND ${cmark} --unsafe --extension table ${CMAKE_CURRENT_LIST_DIR}/../docs/guide/${language}.md
                  OUTPUT_VARIABLE body COMMAND_ERROR_IS_FATAL ANY)
  string(REPLACE ".md\"" ".html\"" body "${body}")
  file(WRITE $ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/share/doc/tarnbeacon/guide/${language}.html
       "<!DOCTYPE html>\n<html lang=\"${language}\">\n<head>\n<meta charset=\"utf-8\">\n<title>TarnBeacon</title>\n"
       "<style>${style}</style>\n</head>\n<body>\n${body}</body>\n</html>\n")
endforeach()
