# The components: `runtime` (libzamofirewall), `platform` (the libraries below it), `development`,
# `command`, `service` (units for systemd), `documentation` and `example` go below the prefix.
# `system` is what programs look for at fixed paths, wherever the prefix is.
include(CMakePackageConfigHelpers)

set(packageDirectory ${CMAKE_INSTALL_LIBDIR}/cmake/zamofirewall)

install(TARGETS zamofirewall EXPORT zamofirewallTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    COMPONENT runtime
    NAMELINK_COMPONENT development)
install(DIRECTORY include/zamofirewall
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    COMPONENT development)

install(EXPORT zamofirewallTargets
    NAMESPACE zamofirewall::
    DESTINATION ${packageDirectory}
    COMPONENT development)
configure_package_config_file(cmake/zamofirewallConfig.cmake.in
    ${CMAKE_CURRENT_BINARY_DIR}/zamofirewallConfig.cmake
    INSTALL_DESTINATION ${packageDirectory})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/zamofirewallConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES
    ${CMAKE_CURRENT_BINARY_DIR}/zamofirewallConfig.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/zamofirewallConfigVersion.cmake
    DESTINATION ${packageDirectory}
    COMPONENT development)

# pkg-config finds everything from the place of the file, so that an installed tree can be moved.
file(RELATIVE_PATH prefixFromPkgConfig
    ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
file(RELATIVE_PATH includesFromPkgConfig
    ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_FULL_INCLUDEDIR})
# Programs ask the platform for the last error (VLIBCErrGet). An appliance may have its platform
# without the links that a linker looks for, so there they name that library themselves.
set(platformForPkgConfig "")
if(ZAMO_PLATFORM STREQUAL "linux")
    set(platformForPkgConfig -lzamocore)
endif()
configure_file(cmake/zamofirewall.pc.in ${CMAKE_CURRENT_BINARY_DIR}/zamofirewall.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zamofirewall.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
    COMPONENT development)

zamo_install_man_pages(development
    zamofirewall.3
    zamofirewall-c.3
    zamofirewall-controller.3
    zamofirewall-database.3
    zamofirewall-files.3
    zamofirewall-geoip.3
    zamofirewall-hook.3
    zamofirewall-modules.3
    zamofirewall-profiles.3
    zamofirewall-rules.3
    zamofirewall-translator.3)

install(FILES README.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)
install(DIRECTORY docs examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation
    PATTERN man EXCLUDE)
if(TARGET firewall-control)
    if(IS_ABSOLUTE "${CMAKE_INSTALL_BINDIR}" OR IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
        set(librariesFromPrograms ${CMAKE_INSTALL_FULL_LIBDIR})
    else()
        file(RELATIVE_PATH librariesFromPrograms
            ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
        string(PREPEND librariesFromPrograms "$ORIGIN/")
    endif()
    set_target_properties(firewall-control PROPERTIES INSTALL_RPATH "${librariesFromPrograms}")
    install(TARGETS firewall-control
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
        COMPONENT example)
endif()
