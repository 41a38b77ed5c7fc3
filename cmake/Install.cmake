include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/DhcpLib)

# Each component becomes a package (cmake/Package.cmake); Headers and Development share one.
install(TARGETS DhcpPlatform DhcpLib EXPORT DhcpLib
        LIBRARY COMPONENT Library NAMELINK_COMPONENT Development)
# Headers in internal/ folders are only for the library's own sources; their functions are not exported.
install(DIRECTORY ${DHCPLIB_PLATFORM}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/DhcpPlatform COMPONENT Headers
        FILES_MATCHING PATTERN "*.h" PATTERN internal EXCLUDE)
install(DIRECTORY DhcpLib ${PROJECT_BINARY_DIR}/generated/DhcpLib DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        COMPONENT Headers
        FILES_MATCHING PATTERN "*.h" PATTERN internal EXCLUDE)
install(FILES DhcpLib/DhcpLib.json DESTINATION ${DHCPLIB_CONFIG_DIR} COMPONENT Configuration)

# The libraries depend on no other package, so the file of exported targets serves as the package file.
install(EXPORT DhcpLib NAMESPACE DhcpLib:: FILE DhcpLibConfig.cmake DESTINATION ${package_dir}
        COMPONENT Development)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/DhcpLibConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/DhcpLibConfigVersion.cmake DESTINATION ${package_dir} COMPONENT Development)

# The pkg-config file gives the prefix relative to its own location, so that the installed tree can be moved.
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX}/${pkgconfig_dir}
           OUTPUT_VARIABLE prefix_from_pkgconfig)
configure_file(cmake/DhcpLib.pc.in DhcpLib.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/DhcpLib.pc DESTINATION ${pkgconfig_dir} COMPONENT Development)
