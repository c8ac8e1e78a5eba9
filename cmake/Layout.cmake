# The build tree mirrors the installed tree, so the program finds its helper
# tools and resources by the same relative paths in both:
#   bin/                          the programs (and, in the build tree, the tests)
#   libexec/korvane-generator/    our stand-ins for ditto and plutil
#   share/korvane-generator/      resources
set(KORVANE_LIBEXEC_SUBDIR "${CMAKE_INSTALL_LIBEXECDIR}/korvane-generator")
set(KORVANE_RESOURCE_SUBDIR "${CMAKE_INSTALL_DATADIR}/korvane-generator")

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/${CMAKE_INSTALL_BINDIR}")
set(KORVANE_BUILD_LIBEXEC_DIR "${CMAKE_BINARY_DIR}/${KORVANE_LIBEXEC_SUBDIR}")
set(KORVANE_BUILD_RESOURCE_DIR "${CMAKE_BINARY_DIR}/${KORVANE_RESOURCE_SUBDIR}")
file(MAKE_DIRECTORY "${KORVANE_BUILD_RESOURCE_DIR}")

# The resource folder exists in an installation even before anything is put in it.
install(DIRECTORY DESTINATION "${KORVANE_RESOURCE_SUBDIR}")
