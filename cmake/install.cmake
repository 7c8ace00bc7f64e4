include(CMakePackageConfigHelpers)

set(packageDirectory ${CMAKE_INSTALL_LIBDIR}/cmake/zamofirewall)

install(TARGETS zamofirewall EXPORT zamofirewallTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/zamofirewall DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

install(EXPORT zamofirewallTargets NAMESPACE zamofirewall:: DESTINATION ${packageDirectory})
configure_package_config_file(cmake/zamofirewallConfig.cmake.in
    ${CMAKE_CURRENT_BINARY_DIR}/zamofirewallConfig.cmake
    INSTALL_DESTINATION ${packageDirectory})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/zamofirewallConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES
    ${CMAKE_CURRENT_BINARY_DIR}/zamofirewallConfig.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/zamofirewallConfigVersion.cmake
    DESTINATION ${packageDirectory})

# pkg-config finds the prefix from the place of the file, so that an installed tree can be moved.
file(RELATIVE_PATH prefixFromPkgConfig
    ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/zamofirewall.pc.in ${CMAKE_CURRENT_BINARY_DIR}/zamofirewall.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zamofirewall.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
