# How everything of ours is compiled: the language, the warnings, ccache and the instrumented builds.

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "Kind of build" FORCE)
endif()

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# What clang's sanitizers pass over. ccache has to be told that the file matters.
set(sanitizerIgnoreList ${PROJECT_SOURCE_DIR}/cmake/sanitizers.ignore)

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  # Without the first, nothing that uses a precompiled header would be kept.
  set(ccacheSettings CCACHE_SLOPPINESS=pch_defines,time_macros)
  if(KORVAT_SANITIZE)
    list(APPEND ccacheSettings CCACHE_EXTRAFILES=${sanitizerIgnoreList})
  endif()
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env ${ccacheSettings} ${CCACHE_PROGRAM})
endif()

# For headers that take more time than what includes them. Optimised builds go without: g++ warns of
# what it should not there, and so they show that every file includes what it needs.
function(precompileHeaders target)
  if(NOT CMAKE_BUILD_TYPE STREQUAL Debug)
    return()
  endif()
  target_precompile_headers(${target} PRIVATE ${ARGN})
  # For ccache, which has to see the precompiled header, and that it has not changed.
  if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
    target_compile_options(${target} PRIVATE "SHELL:-Xclang -fno-pch-timestamp")
  else()
    target_compile_options(${target} PRIVATE -fpch-preprocess)
  endif()
endfunction()

# Linked privately into each of our targets, so that a project which includes this one keeps its own
# warnings and instrumentation.
add_library(korvat_compiling INTERFACE)
target_compile_options(korvat_compiling INTERFACE -Wall -Wextra -Wconversion)
target_compile_definitions(korvat_compiling INTERFACE $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)

if(KORVAT_WERROR)
  target_compile_options(korvat_compiling INTERFACE -Werror)
endif()

if(KORVAT_SANITIZE)
  set(sanitizeFlags -fsanitize=${KORVAT_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
    list(APPEND sanitizeFlags -fsanitize-ignorelist=${sanitizerIgnoreList})
  endif()
  target_compile_options(korvat_compiling INTERFACE ${sanitizeFlags})
  target_link_options(korvat_compiling INTERFACE ${sanitizeFlags})
endif()

if(KORVAT_COVERAGE)
  if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
    set(coverageFlags -fprofile-instr-generate -fcoverage-mapping)  # for llvm-cov: by the source
  else()
    set(coverageFlags --coverage)
  endif()
  # Atomic: counters that threads share would else come out wrong, even negative.
  target_compile_options(korvat_compiling INTERFACE ${coverageFlags} -fprofile-update=atomic)
  target_link_options(korvat_compiling INTERFACE ${coverageFlags})
endif()
