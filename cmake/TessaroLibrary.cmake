# tessaro_add_library(<name>
#   SOURCE_DIR <dir> INCLUDE_DIR <dir>
#   [LIBRARIES <public targets>...] [PRIVATE_LIBRARIES <targets>...]
#   [PACKAGES <find_dependency arguments>...]   packages that a consumer's CMake must find
#   [REQUIRES <modules>...]                     what the pkg-config file requires
#   DESCRIPTION <text>)
#
# One shared library with hidden visibility, a version and a soname, an alias <name>::<name>, and an install
# rule with a CMake package and a pkg-config file. Sources are all .cpp files below SOURCE_DIR.
include(CMakePackageConfigHelpers)

function(tessaro_add_library name)
  cmake_parse_arguments(ARG "" "SOURCE_DIR;INCLUDE_DIR;DESCRIPTION"
    "LIBRARIES;PRIVATE_LIBRARIES;PACKAGES;REQUIRES" ${ARGN})

  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${ARG_SOURCE_DIR}/*.cpp)
  add_library(${name} SHARED ${sources})
  add_library(${name}::${name} ALIAS ${name})
  string(TOUPPER ${name} upper)
  target_compile_definitions(${name} PRIVATE ${upper}_BUILDING)
  target_include_directories(${name}
    PUBLIC $<BUILD_INTERFACE:${ARG_INCLUDE_DIR}> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>
    PRIVATE ${ARG_SOURCE_DIR})
  target_compile_features(${name} PUBLIC cxx_std_20)
  target_link_libraries(${name}
    PUBLIC ${ARG_LIBRARIES}
    PRIVATE ${ARG_PRIVATE_LIBRARIES} $<BUILD_INTERFACE:tessaro_compile_options>)
  target_link_options(${name} PRIVATE -Wl,--no-undefined)
  if(TESSARO_SANITIZE AND CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    # clang links its sanitizer runtime into programs only, so a library's references to it stay open.
    target_link_options(${name} PRIVATE -Wl,--unresolved-symbols=ignore-all)
  endif()
  # Installed side by side, the libraries find each other wherever the prefix is.
  set_target_properties(${name} PROPERTIES
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    INSTALL_RPATH "$ORIGIN")

  install(TARGETS ${name} EXPORT ${name}Targets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(DIRECTORY ${ARG_INCLUDE_DIR}/${name} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    FILES_MATCHING PATTERN "*.h")

  set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/${name})
  install(EXPORT ${name}Targets NAMESPACE ${name}:: DESTINATION ${package_dir})
  set(PACKAGE_FIND_LINES "")
  foreach(package IN LISTS ARG_PACKAGES)
    string(APPEND PACKAGE_FIND_LINES "find_dependency(${package})\n")
  endforeach()
  set(PACKAGE_NAME ${name})
  configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/PackageConfig.cmake.in
    ${PROJECT_BINARY_DIR}/package/${name}Config.cmake INSTALL_DESTINATION ${package_dir})
  write_basic_package_version_file(${PROJECT_BINARY_DIR}/package/${name}ConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
  install(FILES
    ${PROJECT_BINARY_DIR}/package/${name}Config.cmake
    ${PROJECT_BINARY_DIR}/package/${name}ConfigVersion.cmake
    DESTINATION ${package_dir})

  set(PACKAGE_DESCRIPTION "${ARG_DESCRIPTION}")
  list(JOIN ARG_REQUIRES ", " PACKAGE_REQUIRES)
  # The file finds its prefix from its own place, so that an installed tree may be moved.
  file(RELATIVE_PATH PREFIX_FROM_PKGCONFIG
    ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
  configure_file(${PROJECT_SOURCE_DIR}/cmake/package.pc.in
    ${PROJECT_BINARY_DIR}/package/${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/package/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()
