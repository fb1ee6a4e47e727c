# Installation: libraries, headers, a CMake package and pkg-config files. The components are the Debian packages
# (debian/control).

include(CMakePackageConfigHelpers)

set(development COMPONENT libuvelcommon-base-dev)

set(libraries uvelcommon_base uvelhost)
set(library_packages libuvelcommon-base1 libuvelhost1)
foreach(target package IN ZIP_LISTS libraries library_packages)
    install(TARGETS ${target} EXPORT uvelcommon_base_targets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${package} NAMELINK_${development})
endforeach()
foreach(dir common common_adp event diag)
    install(DIRECTORY ${PROJECT_SOURCE_DIR}/src/${dir}/include/uvelcommon_base
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} ${development} FILES_MATCHING PATTERN "*.h")
endforeach()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/host/include/uvelhost DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} ${development})

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/uvelcommon_base)
install(EXPORT uvelcommon_base_targets NAMESPACE uvelcommon_base:: DESTINATION ${package_dir}
    FILE uvelcommon_base-targets.cmake ${development})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/uvelcommon_base-config.cmake.in
    ${PROJECT_BINARY_DIR}/uvelcommon_base-config.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/uvelcommon_base-config-version.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/uvelcommon_base-config.cmake
    ${PROJECT_BINARY_DIR}/uvelcommon_base-config-version.cmake DESTINATION ${package_dir} ${development})

# pkg-config files find the rest of the installation from where they lie, so that it can be moved.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_LIBDIR BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX} OUTPUT_VARIABLE libdir_in_prefix)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig
    OUTPUT_VARIABLE prefix_from_pkgconfig)
foreach(name uvelcommon_base uvelhost)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/${name}.pc.in ${PROJECT_BINARY_DIR}/${name}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig ${development})
endforeach()
