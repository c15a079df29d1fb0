# The rules of cmake --install, and the Debian package that CPack makes from them.

# The newest version in the changelog must be the project's; the package takes its date.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS CHANGELOG.md)
file(STRINGS CHANGELOG.md release_heading REGEX "^## [0-9]" LIMIT_COUNT 1)
if(NOT release_heading MATCHES "^## ([0-9.]+) - ([0-9-]+)$" OR NOT CMAKE_MATCH_1 STREQUAL PROJECT_VERSION)
  message(FATAL_ERROR "The newest version of CHANGELOG.md, \"${release_heading}\", is not ${PROJECT_VERSION}.")
endif()
set(release_date ${CMAKE_MATCH_2})
execute_process(COMMAND date --utc --date ${release_date} +%a,\ %d\ %b\ %Y\ %T\ %z
                OUTPUT_VARIABLE release_mail_date OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)

# Fills in version and date; with COMPRESS also makes a compressed file, NAME.gz.
set(generated ${PROJECT_BINARY_DIR}/packaging)
function(fill_in source name)
  configure_file(packaging/${source} ${generated}/${name} @ONLY)
  if("COMPRESS" IN_LIST ARGN)
    execute_process(COMMAND gzip -9nkf ${generated}/${name} COMMAND_ERROR_IS_FATAL ANY)
  endif()
endfunction()
fill_in(tarnbeacon.1.in tarnbeacon.1 COMPRESS)
fill_in(tarnbeacon-cli.1.in tarnbeacon-cli.1 COMPRESS)
fill_in(debian/changelog.in changelog COMPRESS)
fill_in(desktop/org.tarnbeacon.TarnBeacon.metainfo.xml.in org.tarnbeacon.TarnBeacon.metainfo.xml)

# The program reads and writes files in its own directory, so it has a directory of its own.
set(program_directory lib/tarnbeacon)
install(TARGETS tarnbeacon tarnbeacon-cli DESTINATION ${program_directory})
install(SCRIPT packaging/installSettings.cmake)
install(FILES packaging/desktop/tarnbeacon.desktop DESTINATION share/applications)
install(FILES ${generated}/org.tarnbeacon.TarnBeacon.metainfo.xml DESTINATION share/metainfo)
foreach(size 16 32 48 64 128 256)
  install(FILES ui/art/icon-${size}.png DESTINATION share/icons/hicolor/${size}x${size}/apps RENAME tarnbeacon.png)
endforeach()
install(FILES ui/art/icon.svg DESTINATION share/icons/hicolor/scalable/apps RENAME tarnbeacon.svg)
install(FILES ${generated}/tarnbeacon.1.gz ${generated}/tarnbeacon-cli.1.gz DESTINATION share/man/man1)
install(FILES packaging/completion DESTINATION share/bash-completion/completions RENAME tarnbeacon-cli)
install(FILES README.md CHANGELOG.md packaging/debian/copyright ${generated}/changelog.gz
        DESTINATION share/doc/tarnbeacon)
install(DIRECTORY docs/guide DESTINATION share/doc/tarnbeacon)
install(SCRIPT packaging/guidePages.cmake)
install(FILES packaging/60-tarnbeacon-adapter.rules DESTINATION share/doc/tarnbeacon/examples)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tarnbeacon)
set(CPACK_PACKAGE_CONTACT "TarnBeacon maintainers <maintainers@tarnbeacon.example>")
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
file(READ packaging/debian/description CPACK_DEBIAN_PACKAGE_DESCRIPTION)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION electronics)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE ${PROJECT_HOMEPAGE_URL})
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The X11 output is a plugin; the fonts replace those that the windows ask for.
set(CPACK_DEBIAN_PACKAGE_DEPENDS
    "qt6-qpa-plugins, fonts-liberation2 | fonts-liberation, fonts-ipafont-gothic | fonts-vlgothic")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS qt6-wayland)
set(CPACK_DEBIAN_PACKAGE_SUGGESTS qt6-gtk-platformtheme) # for GNOME's colours, also dark ones
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/debian/conffiles
    ${PROJECT_SOURCE_DIR}/packaging/debian/postinst ${PROJECT_SOURCE_DIR}/packaging/debian/postrm)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
