# Installation: libraries, headers, a CMake package and pkg-config files.

include(CMakePackageConfigHelpers)

install(TARGETS uvelcommon_base uvelhost EXPORT uvelcommon_base_targets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
foreach(dir common common_adp event diag)
    install(DIRECTORY ${PROJECT_SOURCE_DIR}/src/${dir}/include/uvelcommon_base
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
endforeach()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/host/include/uvelhost DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/uvelcommon_base)
install(EXPORT uvelcommon_base_targets NAMESPACE uvelcommon_base:: DESTINATION ${package_dir}
    FILE uvelcommon_base-targets.cmake)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/uvelcommon_base-config.cmake.in
    ${PROJECT_BINARY_DIR}/uvelcommon_base-config.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/uvelcommon_base-config-version.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/uvelcommon_base-config.cmake
    ${PROJECT_BINARY_DIR}/uvelcommon_base-config-version.cmake DESTINATION ${package_dir})

# pkg-config files find the rest of the installation from where they lie, so that it can be moved.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_LIBDIR BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX} OUTPUT_VARIABLE libdir_in_prefix)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig
    OUTPUT_VARIABLE prefix_from_pkgconfig)
foreach(name uvelcommon_base uvelhost)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/${name}.pc.in ${PROJECT_BINARY_DIR}/${name}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
