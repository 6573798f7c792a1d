# What lets other projects find the installed library: a CMake package and a pkg-config file. Neither
# holds an absolute path, so that the prefix can be moved.
include(CMakePackageConfigHelpers)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/Renderer)
configure_package_config_file(cmake/RendererConfig.cmake.in RendererConfig.cmake
                              INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(RendererConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/RendererConfig.cmake
              ${PROJECT_BINARY_DIR}/RendererConfigVersion.cmake
        DESTINATION ${package_folder})
install(EXPORT RendererTargets NAMESPACE Renderer:: DESTINATION ${package_folder})

file(RELATIVE_PATH pkgconfig_to_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig
     ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/renderer.pc.in renderer.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/renderer.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

if(TARGET renderer_command)
  install(TARGETS renderer_command)
endif()
