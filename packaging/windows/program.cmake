# Icon, version and manifest of the Windows programs.
enable_language(RC)
set(generated ${PROJECT_BINARY_DIR}/packaging)
set(icons 16 32 48 64 128 256)
list(TRANSFORM icons REPLACE "(.+)" "${PROJECT_SOURCE_DIR}/ui/art/icon-\\1.png")
add_custom_command(OUTPUT ${generated}/program.ico COMMAND convert ${icons} ${generated}/program.ico DEPENDS ${icons}
                   VERBATIM)
configure_file(packaging/windows/program.rc.in ${generated}/program.rc @ONLY)
configure_file(packaging/windows/program.manifest.in ${generated}/program.manifest @ONLY)
set_source_files_properties(${generated}/program.rc PROPERTIES
                            OBJECT_DEPENDS "${generated}/program.ico;${generated}/program.manifest")
add_custom_target(programIcon DEPENDS ${generated}/program.ico)
add_library(programResources OBJECT ${generated}/program.rc) # the manifest sets the code page, of the tests too
add_dependencies(programResources programIcon)
target_link_libraries(tarnbeacon-cli PRIVATE programResources)
if(TARNBEACON_QT)
  target_link_libraries(tarnbeacon PRIVATE programResources)
  # It has no console. The C library finds main() by itself; the entry point of Qt needs another signature.
  set_target_properties(tarnbeacon PROPERTIES OUTPUT_NAME TarnBeacon WIN32_EXECUTABLE ON qt_no_entrypoint ON)
endif()
