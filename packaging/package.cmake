# The rules of cmake --install, and the Debian package that CPack makes from them.

# The newest version in the changelog must be the project's; the package takes its date.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS CHANGELOG.md)
file(STRINGS CHANGELOG.md release_heading REGEX "^## [0-9]" LIMIT_COUNT 1)
if(NOT release_heading MATCHES "^## ([0-9.]+) - ([0-9-]+)$" OR NOT CMAKE_MATCH_1 STREQUAL PROJECT_VERSION)
  message(FATAL_ERROR "The newest version of CHANGELOG.md, \"${release_heading}\", is not ${PROJECT_VERSION}.")
endif()
set(release_date ${CMAKE_MATCH_2})
execute_process(COMMAND env LC_ALL=C date --utc --date ${release_date} +%a,\ %d\ %b\ %Y\ %T\ %z
                OUTPUT_VARIABLE release_mail_date OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)

# The version of a package names the release of Debian that it is for, so that the packages of two releases differ,
# and an upgrade of the system brings the newer one. "+", because a forge may rename files with "~".
cmake_host_system_information(RESULT host QUERY DISTRIB_INFO)
set(package_version ${PROJECT_VERSION})
set(package_suite unstable)
if(host_ID STREQUAL "debian" AND host_VERSION_ID)
  set(package_version ${PROJECT_VERSION}+deb${host_VERSION_ID})
  set(package_suite ${host_VERSION_CODENAME})
endif()

# Fills in version and date; with COMPRESS also makes a compressed file, NAME.gz.
set(generated ${PROJECT_BINARY_DIR}/packaging)
function(fill_in source name)
  configure_file(packaging/${source} ${generated}/${name} @ONLY)
  if("COMPRESS" IN_LIST ARGN)
    execute_process(COMMAND gzip -9nkf ${generated}/${name} COMMAND_ERROR_IS_FATAL ANY)
  endif()
endfunction()
fill_in(tarnbeacon-cli.1.in tarnbeacon-cli.1 COMPRESS)

# Two packages: "cli" has all that runs without a screen, and what both programs use; "windows" has the rest.
set(packages cli)
if(TARNBEACON_QT)
  list(APPEND packages windows)
endif()

# The programs read and write files in their own directory, so they have a directory of their own.
function(install_program component name)
  install(TARGETS ${name} DESTINATION lib/tarnbeacon COMPONENT ${component})
  file(MAKE_DIRECTORY ${generated}/bin)
  file(CREATE_LINK ../lib/tarnbeacon/${name} ${generated}/bin/${name} SYMBOLIC)
  install(FILES ${generated}/bin/${name} DESTINATION bin COMPONENT ${component})
  install(FILES ${generated}/${name}.1.gz DESTINATION share/man/man1 COMPONENT ${component})
  set(package ${name})
  fill_in(debian/changelog.in ${name}/changelog COMPRESS)
  install(FILES packaging/debian/copyright ${generated}/${name}/changelog.gz DESTINATION share/doc/${name}
          COMPONENT ${component})
endfunction()

install_program(cli tarnbeacon-cli)
install(SCRIPT packaging/installSettings.cmake COMPONENT cli)
install(FILES packaging/completion DESTINATION share/bash-completion/completions RENAME tarnbeacon-cli COMPONENT cli)
install(FILES packaging/60-tarnbeacon-adapter.rules DESTINATION share/doc/tarnbeacon-cli/examples COMPONENT cli)

if(TARNBEACON_QT)
  fill_in(tarnbeacon.1.in tarnbeacon.1 COMPRESS)
  fill_in(desktop/org.tarnbeacon.TarnBeacon.metainfo.xml.in org.tarnbeacon.TarnBeacon.metainfo.xml)
  install_program(windows tarnbeacon)
  install(FILES packaging/desktop/tarnbeacon.desktop DESTINATION share/applications COMPONENT windows)
  install(FILES ${generated}/org.tarnbeacon.TarnBeacon.metainfo.xml DESTINATION share/metainfo COMPONENT windows)
  set(icons share/icons/hicolor)
  foreach(size 16 32 48 64 128 256)
    install(FILES ui/art/icon-${size}.png DESTINATION ${icons}/${size}x${size}/apps RENAME tarnbeacon.png
            COMPONENT windows)
  endforeach()
  install(FILES ui/art/icon.svg DESTINATION ${icons}/scalable/apps RENAME tarnbeacon.svg COMPONENT windows)
  install(FILES README.md CHANGELOG.md DESTINATION share/doc/tarnbeacon COMPONENT windows)
  install(DIRECTORY docs/guide DESTINATION share/doc/tarnbeacon COMPONENT windows)
  install(SCRIPT packaging/guidePages.cmake COMPONENT windows)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tarnbeacon)
set(CPACK_PACKAGE_CONTACT "TarnBeacon maintainers <maintainers@tarnbeacon.example>")
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL ${packages})
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_VERSION ${package_version})
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE ${PROJECT_HOMEPAGE_URL})
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
foreach(package IN LISTS packages)
  string(TOUPPER ${package} PACKAGE)
  file(READ packaging/debian/description-${package} CPACK_DEBIAN_${PACKAGE}_DESCRIPTION)
  set(CPACK_DEBIAN_${PACKAGE}_PACKAGE_SECTION electronics)
endforeach()

set(CPACK_DEBIAN_CLI_PACKAGE_NAME tarnbeacon-cli)
# Up to 1.3 tarnbeacon had the INI files and the link log.
set(CPACK_DEBIAN_CLI_PACKAGE_BREAKS "tarnbeacon (<< 1.4)")
set(CPACK_DEBIAN_CLI_PACKAGE_REPLACES "tarnbeacon (<< 1.4)")
set(CPACK_DEBIAN_CLI_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/debian/conffiles
    ${PROJECT_SOURCE_DIR}/packaging/debian/postinst ${PROJECT_SOURCE_DIR}/packaging/debian/postrm)

set(CPACK_DEBIAN_WINDOWS_PACKAGE_NAME tarnbeacon)
# The X11 output is a plugin; the fonts replace those that the windows ask for.
string(CONCAT CPACK_DEBIAN_WINDOWS_PACKAGE_DEPENDS "tarnbeacon-cli (= ${package_version}), qt6-qpa-plugins, "
       "fonts-liberation2 | fonts-liberation, fonts-ipafont-gothic | fonts-vlgothic")
set(CPACK_DEBIAN_WINDOWS_PACKAGE_RECOMMENDS qt6-wayland)
set(CPACK_DEBIAN_WINDOWS_PACKAGE_SUGGESTS qt6-gtk-platformtheme) # for GNOME's colours, also dark ones
include(CPack)
