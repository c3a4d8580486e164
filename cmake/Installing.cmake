# What `cmake --install` puts in place: the library with its headers and CMake package, the program
# and the catalogue.

include(CMakePackageConfigHelpers)

install(TARGETS korvat EXPORT korvatTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
if(TARGET korvat_tool)
  install(TARGETS korvat_tool RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

install(DIRECTORY ${PROJECT_SOURCE_DIR}/korvat DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING PATTERN "*.h")
install(DIRECTORY ${KORVAT_SOURCE_CATALOG}/ DESTINATION ${CMAKE_INSTALL_DATADIR}/korvat)

set(packageDir ${CMAKE_INSTALL_LIBDIR}/cmake/korvat)
install(EXPORT korvatTargets NAMESPACE korvat:: DESTINATION ${packageDir})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/korvatConfig.cmake.in
  ${PROJECT_BINARY_DIR}/korvatConfig.cmake INSTALL_DESTINATION ${packageDir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/korvatConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/korvatConfig.cmake ${PROJECT_BINARY_DIR}/korvatConfigVersion.cmake
  DESTINATION ${packageDir})
