# Debian packages, one for each component of Installing.cmake: `cpack -G DEB` in the build folder. The
# catalogue goes with the library, so that the program and all other users of the library share it.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME korvat)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "typed view of LonWorks network data")
set(CPACK_PACKAGE_VENDOR "korvat developers")
set(CPACK_PACKAGE_CONTACT "korvat developers <korvat@localhost>")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_COMPONENTS_ALL library development)
if(TARGET korvat_tool)
  list(APPEND CPACK_COMPONENTS_ALL program)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(thisVersion "(= ${PROJECT_VERSION})")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libkorvat)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY "=")
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION
  "This package has the shared library and the catalogue. From a catalogue of
resource definitions the library learns how the bytes of a value are laid out,
and then converts values between raw bytes and JSON, in both directions.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libkorvat-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libkorvat ${thisVersion}, libboost-dev (>= 1.74)")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
  "This package has the headers of the library, its CMake package,
its pkg-config file and a manual page.")

# shlibdeps does not know the package of a library that is built at the same time.
set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME korvat)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_DEPENDS "libkorvat ${thisVersion}")
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/lib)
set(CPACK_DEBIAN_PROGRAM_DESCRIPTION
  "This package has the program, with its manual pages and the completion of its
command line. It converts raw values to JSON and back, one by one or as a
stream of records, shows and changes single members, and describes the types
of a catalogue.")

include(CPack)
