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

  # Shell, and where it looks for what completes the program, under the name that it asks for.
  set(completions
    "bash bash-completion/completions/korvat"
    "zsh zsh/vendor-completions/_korvat"
    "fish fish/vendor_completions.d/korvat.fish")
  foreach(row ${completions})
    string(REPLACE " " ";" row ${row})
    list(GET row 0 shell)
    list(GET row 1 place)
    set(script ${PROJECT_BINARY_DIR}/completions/${place})
    get_filename_component(folder ${place} DIRECTORY)
    file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/completions/${folder})
    add_custom_command(OUTPUT ${script} COMMAND korvat_tool completion ${shell} > ${script} VERBATIM)
    install(FILES ${script} DESTINATION ${CMAKE_INSTALL_DATADIR}/${folder} COMPONENT program)
    list(APPEND generatedFiles ${script})
  endforeach()
endif()

# --- Manual pages ---

# Page and component. Pages are installed compressed, as Debian has them.
set(manualPages "libkorvat.3 development")
if(TARGET korvat_tool)
  list(APPEND manualPages "korvat.1 program" "korvat-catalogue.5 program")
endif()
find_program(GZIP gzip REQUIRED)
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/man)
foreach(row ${manualPages})
  string(REPLACE " " ";" row ${row})
  list(GET row 0 page)
  list(GET row 1 component)
  set(source ${PROJECT_SOURCE_DIR}/docs/man/${page})
  set(compressed ${PROJECT_BINARY_DIR}/man/${page}.gz)
  string(REGEX MATCH "[0-9]$" section ${page})
  add_custom_command(OUTPUT ${compressed}
    COMMAND ${GZIP} -9nc ${source} > ${compressed} DEPENDS ${source} VERBATIM)
  install(FILES ${compressed} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section}
    COMPONENT ${component})
  list(APPEND generatedFiles ${compressed})
endforeach()

add_custom_target(korvat_generated ALL DEPENDS ${generatedFiles})
