# What a package holds. The program reads its INI files from its own folder, so all of it lies in one of its own.
set(program_folder /opt/tarnbeacon)
install(TARGETS tarnbeacon DESTINATION ${program_folder})
install(FILES packaging/Setting.INI packaging/TYPE.INI DESTINATION ${program_folder})
install(FILES packaging/tarnbeacon.desktop DESTINATION /usr/share/applications)
install(FILES README.md packaging/60-tarnbeacon-adapter.rules DESTINATION /usr/share/doc/tarnbeacon)
foreach(size 16 32 48 64 128 256)
  install(FILES ui/art/icon-${size}.png DESTINATION /usr/share/icons/hicolor/${size}x${size}/apps
          RENAME tarnbeacon.png)
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "TarnBeacon maintainers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Rewrite the firmware of a sensor amplifier unit over RS-232")
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION electronics)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Stand-ins for the fonts that the windows ask for.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "fonts-liberation2 | fonts-liberation, fonts-ipafont-gothic | fonts-vlgothic")
# An upgrade of the package leaves edited INI files alone; the link log belongs to those who may use serial ports.
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/conffiles
    ${PROJECT_SOURCE_DIR}/packaging/postinst ${PROJECT_SOURCE_DIR}/packaging/postrm)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
