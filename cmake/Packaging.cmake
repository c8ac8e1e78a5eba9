# The Debian package, korvane-generator_<version>_<arch>.deb, made by CPack
# from the same install rules as `cmake --install` (scripts/package.sh builds
# and checks it). Installed under /usr, the programs find their tools and
# resources beside them as in any other installation.
if(APPLE)
  return()
endif()

set(KORVANE_PACKAGE_NAME korvane-generator)
set(KORVANE_MAINTAINER "KorvaneGenerator project <korvanegenerator@example.org>")

# What Debian asks of every package's documentation folder: the copyright
# and a changelog compressed without a time stamp, so that two builds of one
# version give the same bytes.
set(_korvane_docs "${CMAKE_BINARY_DIR}/packaging")
execute_process(COMMAND env LC_ALL=C date -u -R -d "${KORVANE_RELEASE_DATE} 12:00"
  OUTPUT_VARIABLE KORVANE_RELEASE_DATE_RFC2822 OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
configure_file(packaging/debian/changelog.in "${_korvane_docs}/changelog" @ONLY)
add_custom_command(
  OUTPUT "${_korvane_docs}/changelog.gz"
  COMMAND gzip -9 -n -c "${_korvane_docs}/changelog" > "${_korvane_docs}/changelog.gz"
  DEPENDS "${_korvane_docs}/changelog"
  VERBATIM)
add_custom_target(korvane_package_docs ALL DEPENDS "${_korvane_docs}/changelog.gz")
install(FILES packaging/debian/copyright "${_korvane_docs}/changelog.gz"
  DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${KORVANE_PACKAGE_NAME}")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ${KORVANE_PACKAGE_NAME})
set(CPACK_PACKAGE_VENDOR "KorvaneGenerator project")
set(CPACK_PACKAGE_CONTACT "${KORVANE_MAINTAINER}")
set(CPACK_PACKAGE_HOMEPAGE_URL "${KORVANE_HOMEPAGE}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
# Debian ships programs without their debugging information.
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${KORVANE_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# The libraries the programs link, worked out from the binaries; besides
# them hwdata's databases, which the bundled ids copies come from, and Qt's
# SVG image plugin, which the window loads for its icons at run time where
# no binary names it. Recommended: acpiexec, which reads connector types
# from the firmware, and the sound theme of the run's two sounds.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "hwdata, libqt6svg6")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "acpica-tools, sound-theme-freedesktop")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "USB port map generator for macOS (Korvane.kext)")
# The long description under the summary; CPack indents its lines.
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "KorvaneGenerator reads this machine's USB 3 (xHCI) controllers, their
ports and what is plugged into each. You check the ports to keep and set
each port's connector type; it then writes Korvane.kext, a driver package
without code that tells macOS's own USB drivers about those ports, with a
report and a log, packed as Korvane.zip on your Desktop.
.
The package holds the window (korvane-generator) and the command line
(korvane). Neither installs or loads anything.")
include(CPack)
