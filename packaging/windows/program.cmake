# Icon, version and manifest of the Windows programs.
enable_language(RC)
set(generated ${PROJECT_BINARY_DIR}/packaging)
set(icons 16 32 48 64 128 256)
list(TRANSFORM icons REPLACE "(.+)" "${PROJECT_SOURCE_DIR}/ui/art/icon-\\1.png")
add_custom_command(OUTPUT ${generated}/program.ico COMMAND convert ${icons} -strip ${generated}/program.ico
                   DEPENDS ${icons} VERBATIM)
configure_file(packaging/windows/program.manifest.in ${generated}/program.manifest @ONLY)
add_custom_target(programIcon DEPENDS ${generated}/program.ico)

# An object library, so that the tests can have the manifest too, which sets the code page.
function(program_resources library name description)
  configure_file(packaging/windows/program.rc.in ${generated}/${name}.rc @ONLY)
  set_source_files_properties(${generated}/${name}.rc PROPERTIES
                              OBJECT_DEPENDS "${generated}/program.ico;${generated}/program.manifest")
  add_library(${library} OBJECT ${generated}/${name}.rc)
  add_dependencies(${library} programIcon)
endfunction()

program_resources(cliResources tarnbeacon-cli "TarnBeacon without a screen")
target_link_libraries(tarnbeacon-cli PRIVATE cliResources)
if(TARNBEACON_QT)
  program_resources(programResources TarnBeacon "TarnBeacon")
  target_link_libraries(tarnbeacon PRIVATE programResources)
  # It has no console. The C library finds main() by itself; the entry point of Qt needs another signature.
  set_target_properties(tarnbeacon PROPERTIES OUTPUT_NAME TarnBeacon WIN32_EXECUTABLE ON qt_no_entrypoint ON)
endif()
