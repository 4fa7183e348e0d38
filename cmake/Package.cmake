# What `cmake --install` adds to the targets' own rules: the package that
# find_package(Viewer3dModule) finds, the plug-in folder's link to the module,
# and the samples. Every path in it is relative, so that an installed tree can
# be moved as a whole.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Viewer3dModule)
set(plugin_dir ${V3D_PLUGIN_INSTALL_DIR})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/Viewer3dModuleConfig.cmake.in
    ${PROJECT_BINARY_DIR}/Viewer3dModuleConfig.cmake
    INSTALL_DESTINATION ${package_dir} PATH_VARS plugin_dir)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/Viewer3dModuleConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/Viewer3dModuleConfig.cmake
    ${PROJECT_BINARY_DIR}/Viewer3dModuleConfigVersion.cmake
    DESTINATION ${package_dir})
install(EXPORT Viewer3dModuleTargets NAMESPACE Viewer3dModule:: DESTINATION ${package_dir})

install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
if(EXISTS ${PROJECT_SOURCE_DIR}/samples)
    install(DIRECTORY ${PROJECT_SOURCE_DIR}/samples DESTINATION ${CMAKE_INSTALL_DATADIR}/viewer3d)
endif()
