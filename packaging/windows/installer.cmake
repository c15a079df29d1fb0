# The target "installer": the installer, by NSIS, and a zip file of the program without a screen.
set(program ${generated}/TarnBeacon.exe)
set(cli_program ${generated}/tarnbeacon-cli.exe)
set(installer ${PROJECT_BINARY_DIR}/TarnBeacon-${PROJECT_VERSION}-setup.exe)
set(archive ${PROJECT_BINARY_DIR}/tarnbeacon-cli-${PROJECT_VERSION}-windows.zip)
if("$ENV{TARNBEACON_TOOLKIT}" MATCHES "_([^_]+)_[0-9a-f]+/*$") # scripts/toolkit.sh has built it
  set(toolkit_origin "as Debian has it: package qt6-base,\nversion ${CMAKE_MATCH_1}, with Debian's patches.")
else()
  set(toolkit_origin "built by whoever made this program, who\nalso gives you its source.")
endif()
configure_file(packaging/windows/LICENSES.txt.in ${generated}/doc/LICENSES.txt @ONLY NEWLINE_STYLE CRLF)
configure_file(LICENSE ${generated}/doc/LICENSE.txt @ONLY NEWLINE_STYLE CRLF)
configure_file(CHANGELOG.md ${generated}/doc/CHANGELOG.txt @ONLY NEWLINE_STYLE CRLF)
configure_file(packaging/windows/Setting.INI ${generated}/Setting.INI @ONLY NEWLINE_STYLE CRLF)
configure_file(packaging/TYPE.INI ${generated}/TYPE.INI @ONLY NEWLINE_STYLE CRLF)
configure_file(packaging/windows/README.txt.in ${generated}/README.txt @ONLY NEWLINE_STYLE CRLF)
configure_file(/usr/share/common-licenses/LGPL-3 ${generated}/doc/LGPL-3.txt COPYONLY)
configure_file(/usr/share/doc/qt6-base-dev/copyright ${generated}/doc/Qt-copyright.txt COPYONLY)
set(licenses LICENSE.txt LICENSES.txt)
foreach(package libcli11-dev nlohmann-json3-dev mingw-w64-x86-64-dev)
  configure_file(/usr/share/doc/${package}/copyright ${generated}/doc/${package}-copyright.txt COPYONLY)
  list(APPEND licenses ${package}-copyright.txt)
endforeach()
set(pages index.html WINDOWS.html TYPE-INI.html guide/en.html guide/ja.html)
file(GLOB_RECURSE pictures CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR}/docs docs/guide/*.png docs/guide/*.svg)
file(GLOB texts CONFIGURE_DEPENDS docs/*.md docs/guide/*.md packaging/windows/index.md)
add_custom_command(OUTPUT ${generated}/doc/index.html
                   COMMAND ${CMAKE_COMMAND} -Ddocuments=${generated}/doc -P ${PROJECT_SOURCE_DIR}/packaging/guidePages.cmake
                   DEPENDS ${texts} ${PROJECT_SOURCE_DIR}/packaging/guidePages.cmake VERBATIM)

# The commands of the installer for each document.
foreach(document ${licenses} LGPL-3.txt Qt-copyright.txt CHANGELOG.txt ${pages} ${pictures})
  cmake_path(GET document PARENT_PATH folder)
  string(REPLACE / \\ installed "doc/${document}")
  string(REPLACE / \\ folder "doc/${folder}")
  string(APPEND install_documents "  SetOutPath \"$INSTDIR\\${folder}\"\n  File \"${generated}/doc/${document}\"\n")
  string(APPEND check_documents "  !insertmacro refuseIfInUse \"${installed}\"\n")
  string(APPEND remove_documents "  Delete \"$INSTDIR\\${installed}\"\n")
endforeach()
configure_file(packaging/windows/installer.nsi.in ${generated}/installer.nsi @ONLY)
set(archived README.txt Setting.INI TYPE.INI ${licenses})
list(TRANSFORM archived PREPEND ${generated}/ REGEX "README|INI$")
list(TRANSFORM archived PREPEND ${generated}/doc/ REGEX "^[^/]")
add_custom_target(installer
                  COMMAND x86_64-w64-mingw32-strip -o ${program} $<TARGET_FILE:tarnbeacon>
                  COMMAND x86_64-w64-mingw32-strip -o ${cli_program} $<TARGET_FILE:tarnbeacon-cli>
                  COMMAND ${PROJECT_SOURCE_DIR}/packaging/windows/sign ${program}
                  COMMAND ${PROJECT_SOURCE_DIR}/packaging/windows/sign ${cli_program}
                  COMMAND makensis -V2 -INPUTCHARSET UTF8 ${generated}/installer.nsi
                  COMMAND ${PROJECT_SOURCE_DIR}/packaging/windows/archive ${archive} ${cli_program} ${archived}
                  DEPENDS tarnbeacon tarnbeacon-cli ${generated}/doc/index.html VERBATIM)
