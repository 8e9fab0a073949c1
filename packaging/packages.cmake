# Two Debian packages, one a component: "cpack -G DEB" in the build folder.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME calvorin)
set(CPACK_PACKAGE_VERSION ${CALVORIN_VERSION})
set(CPACK_PACKAGE_CONTACT "The Calvorin developers <developers@calvorin.org>")
set(CPACK_PACKAGE_VENDOR "The Calvorin developers")
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL calvorin)
if(TARGET calvorin_desktop)
  list(APPEND CPACK_COMPONENTS_ALL desktop)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SECTION electronics)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)

set(CPACK_DEBIAN_CALVORIN_PACKAGE_NAME calvorin)
set(CPACK_DEBIAN_CALVORIN_PACKAGE_SUGGESTS "calvorin-desktop, srecord, python3")
set(CPACK_DEBIAN_CALVORIN_DESCRIPTION "program the flash of microcontrollers (command line)
Calvorin programs the flash of single-chip microcontrollers through their
serial boot ROM: it loads Intel HEX and Motorola S-record files, and erases,
programs, verifies, reads back and protects the flash.

This package holds the command line, which runs unattended on a bench, and a
virtual chip to try things on. The desktop is in calvorin-desktop.")

set(CPACK_DEBIAN_DESKTOP_PACKAGE_NAME calvorin-desktop)
set(CPACK_DEBIAN_DESKTOP_PACKAGE_DEPENDS "calvorin (= ${CALVORIN_VERSION})")
set(CPACK_DEBIAN_DESKTOP_DESCRIPTION "program the flash of microcontrollers (desktop)
Calvorin programs the flash of single-chip microcontrollers through their
serial boot ROM: it loads Intel HEX and Motorola S-record files, and erases,
programs, verifies, reads back and protects the flash.

This package adds the desktop to the program of the package calvorin: data,
device, log and terminal side by side.")
include(CPack)
