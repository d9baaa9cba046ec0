# Build options, language level, warnings and sanitizers, the same for every target of the tree.
include(GNUInstallDirs)

if(PROJECT_IS_TOP_LEVEL)
  set(TESSARO_TOP_LEVEL ON)
else()
  set(TESSARO_TOP_LEVEL OFF)
endif()

option(TESSARO_BUILD_HOST "Build tessaro-host, the reference host" ${TESSARO_TOP_LEVEL})
option(TESSARO_BUILD_TESTS "Build the tests" ${TESSARO_TOP_LEVEL})
option(TESSARO_BUILD_BENCHMARKS "Build the benchmarks" OFF)
option(TESSARO_BUILD_FUZZERS "Build the fuzz targets" OFF)
option(TESSARO_WARNINGS_AS_ERRORS "Treat warnings as errors" OFF)
set(TESSARO_SANITIZE "" CACHE STRING "Sanitizers to build with, as -fsanitize takes them")

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)

set(CMAKE_CXX_FLAGS_RELEASE "-O3 -DNDEBUG")
# The sanitizer builds keep the assertions and enough optimisation to run the whole suite in minutes.
set(CMAKE_CXX_FLAGS_SANITIZE "-O1 -g1")

find_program(TESSARO_CCACHE ccache)
if(TESSARO_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${TESSARO_CCACHE})
endif()

add_library(tessaro_compile_options INTERFACE)
target_compile_options(tessaro_compile_options INTERFACE
  -Wall -Wextra -Wshadow -Wconversion -Wno-sign-conversion
  # NaN, infinity and signed zero behave as written; errno and floating-point traps are not used.
  -fno-math-errno -fno-trapping-math)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # False positives of this compiler in its own string and optional headers at -O3.
  target_compile_options(tessaro_compile_options INTERFACE -Wno-restrict -Wno-maybe-uninitialized)
endif()
if(TESSARO_WARNINGS_AS_ERRORS)
  target_compile_options(tessaro_compile_options INTERFACE -Werror)
endif()

if(TESSARO_SANITIZE)
  add_compile_options(-fsanitize=${TESSARO_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${TESSARO_SANITIZE})
endif()
