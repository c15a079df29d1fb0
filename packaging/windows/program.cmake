# Icon, version, manifest and name of the Windows program, which has no console.
enable_language(RC)
set(generated ${PROJECT_BINARY_DIR}/packaging)
set(icons 16 32 48 64 128 256)
list(TRANSFORM icons REPLACE "(.+)" "${PROJECT_SOURCE_DIR}/ui/art/icon-\\1.png")
add_custom_command(OUTPUT ${generated}/program.ico COMMAND convert ${icons} ${generated}/program.ico DEPENDS ${icons}
                   VERBATIM)
configure_file(packaging/windows/program.rc.in ${generated}/program.rc @ONLY)
configure_file(packaging/windows/program.manifest.in ${generated}/program.manifest @ONLY)
set_source_files_properties(${generated}/program.rc TARGET_DIRECTORY tarnbeacon PROPERTIES
                            OBJECT_DEPENDS "${generated}/program.ico;${generated}/program.manifest")
add_custom_target(programIcon DEPENDS ${generated}/program.ico)
add_dependencies(tarnbeacon programIcon)
target_sources(tarnbeacon PRIVATE ${generated}/program.rc)
# The C library finds main() by itself; the entry point of Qt needs another signature.
set_target_properties(tarnbeacon PROPERTIES OUTPUT_NAME TarnBeacon WIN32_EXECUTABLE ON qt_no_entrypoint ON)

# The installer, by NSIS: the target "installer".
set(program ${generated}/TarnBeacon.exe)
set(installer ${PROJECT_BINARY_DIR}/TarnBeacon-${PROJECT_VERSION}-setup.exe)
string(REGEX MATCH "_([^_]+)_[0-9a-f]+/*$" ignored "$ENV{TARNBEACON_TOOLKIT}")
set(toolkit_version ${CMAKE_MATCH_1})
configure_file(packaging/windows/LICENSES.txt.in ${generated}/LICENSES.txt @ONLY NEWLINE_STYLE CRLF)
configure_file(packaging/windows/Setting.INI ${generated}/Setting.INI @ONLY NEWLINE_STYLE CRLF)
configure_file(packaging/TYPE.INI ${generated}/TYPE.INI @ONLY NEWLINE_STYLE CRLF)
configure_file(/usr/share/common-licenses/LGPL-3 ${generated}/LGPL-3.txt COPYONLY)
configure_file(/usr/share/doc/qt6-base-dev/copyright ${generated}/Qt-copyright.txt COPYONLY)
configure_file(packaging/windows/installer.nsi.in ${generated}/installer.nsi @ONLY)
add_custom_target(installer
                  COMMAND x86_64-w64-mingw32-strip -o ${program} $<TARGET_FILE:tarnbeacon>
                  COMMAND makensis -V2 ${generated}/installer.nsi
                  DEPENDS tarnbeacon VERBATIM)
