# Test, benchmark and fuzz programs: one a module, all .cpp files of its folder.

# tessaro_add_test(<module> LIBRARIES <targets>... [SOURCE_INCLUDES <dirs>...])
# SOURCE_INCLUDES opens the private headers of a library to the tests of its inner parts.
function(tessaro_add_test module)
  cmake_parse_arguments(ARG "" "" "LIBRARIES;SOURCE_INCLUDES" ${ARGN})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${module}/*.cpp)
  if(NOT sources)
    return()
  endif()
  add_executable(${module}-test ${sources})
  target_link_libraries(${module}-test PRIVATE ${ARG_LIBRARIES} tessaro_test_support GTest::gtest_main
    tessaro_compile_options)
  target_include_directories(${module}-test PRIVATE ${ARG_SOURCE_INCLUDES})
  include(GoogleTest)
  gtest_discover_tests(${module}-test DISCOVERY_MODE PRE_TEST TEST_PREFIX ${module}. PROPERTIES TIMEOUT 300)
endfunction()

# tessaro_add_benchmark(<module> LIBRARIES <targets>...)
# Files named *Native.cpp hold the plain loops that the kernels are compared with: these alone are compiled
# for the machine at hand, so that the comparison is with the best that the compiler can do.
function(tessaro_add_benchmark module)
  cmake_parse_arguments(ARG "" "" "LIBRARIES" ${ARGN})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${module}/*.cpp)
  if(NOT sources)
    return()
  endif()
  add_executable(${module}-bench ${sources})
  target_link_libraries(${module}-bench PRIVATE ${ARG_LIBRARIES} benchmark::benchmark_main benchmark::benchmark
    tessaro_compile_options)
  foreach(source IN LISTS sources)
    if(source MATCHES "Native\\.cpp$")
      set_source_files_properties(${source} PROPERTIES COMPILE_OPTIONS "-O3;-march=native")
    endif()
  endforeach()
  set_property(GLOBAL APPEND PROPERTY TESSARO_BENCHMARKS ${module}-bench)
endfunction()

# tessaro_add_fuzzer(<module> LIBRARIES <targets>...)
# Each file of fuzz/<module> is one target with LLVMFuzzerTestOneInput. With clang it is linked with libFuzzer,
# elsewhere with a driver that feeds it its corpus and seeded random mutations of it.
function(tessaro_add_fuzzer module)
  cmake_parse_arguments(ARG "" "" "LIBRARIES" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${module}/*.cpp)
  foreach(source IN LISTS sources)
    get_filename_component(stem ${source} NAME_WE)
    if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
      add_executable(${module}-${stem} ${source})
      target_link_options(${module}-${stem} PRIVATE -fsanitize=fuzzer)
    else()
      add_executable(${module}-${stem} ${source} ${PROJECT_SOURCE_DIR}/fuzz/StandaloneDriver.cpp)
    endif()
    target_link_libraries(${module}-${stem} PRIVATE ${ARG_LIBRARIES} tessaro_compile_options)
    set_target_properties(${module}-${stem} PROPERTIES
      RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin/fuzz)
  endforeach()
endfunction()
