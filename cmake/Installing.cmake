# What `cmake --install` puts in place, in three components: the library with the catalogue, what it
# takes to build with the library, and the program.

include(CMakePackageConfigHelpers)

set(packageDir ${CMAKE_INSTALL_LIBDIR}/cmake/korvat)
set(pkgConfigDir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# --- The library and its catalogue ---

install(TARGETS korvat EXPORT korvatTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development)
install(DIRECTORY ${KORVAT_SOURCE_CATALOG}/ DESTINATION ${CMAKE_INSTALL_DATADIR}/korvat
  COMPONENT library)

# --- Headers, CMake package, pkg-config file ---

# A header is public when it offers something of the library, when a public header includes it, or
# when it has the limits that the comments of public headers name. These are none of that.
file(GLOB publicHeaders CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR} korvat/*/*.h)
list(FILTER publicHeaders EXCLUDE REGEX "^korvat/builder/")
list(REMOVE_ITEM publicHeaders
  korvat/base/AsciiText.h
  korvat/base/JsonText.h
  korvat/base/ShortText.h
  korvat/convert/ConversionPlan.h
  korvat/convert/DynamicArrays.h
  korvat/convert/LeafWriter.h
  korvat/convert/NumberFit.h
  korvat/convert/PlanCache.h
  korvat/convert/PlanStep.h
  korvat/convert/StackPath.h
  korvat/members/NetworkOrder.h
  korvat/types/DisplayFormats.h)
foreach(header ${publicHeaders})
  get_filename_component(folder ${header} DIRECTORY)
  install(FILES ${PROJECT_SOURCE_DIR}/${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${folder}
    COMPONENT development)
endforeach()

install(EXPORT korvatTargets NAMESPACE korvat:: DESTINATION ${packageDir} COMPONENT development)
set(catalogDir ${CMAKE_INSTALL_DATADIR}/korvat)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/korvatConfig.cmake.in
  ${PROJECT_BINARY_DIR}/korvatConfig.cmake
  INSTALL_DESTINATION ${packageDir} PATH_VARS catalogDir)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/korvatConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/korvatConfig.cmake ${PROJECT_BINARY_DIR}/korvatConfigVersion.cmake
  DESTINATION ${packageDir} COMPONENT development)

# The file finds the prefix from its own place, so that the folder may be moved.
file(RELATIVE_PATH pkgConfigToPrefix
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" pkgConfigToPrefix ${pkgConfigToPrefix})
configure_file(${CMAKE_CURRENT_LIST_DIR}/korvat.pc.in ${PROJECT_BINARY_DIR}/korvat.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/korvat.pc DESTINATION ${pkgConfigDir} COMPONENT development)

# --- The program ---

if(TARGET korvat_tool)
  install(TARGETS korvat_tool RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT program)
endif()
