# Install tree and `find_package(Quorvel)`, which gives applications the targets Quorvel::core and Quorvel::ui.
include(CMakePackageConfigHelpers)

set(config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Quorvel)
configure_package_config_file(cmake/QuorvelConfig.cmake.in QuorvelConfig.cmake INSTALL_DESTINATION ${config_dir})
# Before 1.0 a new minor version may change what a caller sees.
write_basic_package_version_file(QuorvelConfigVersion.cmake COMPATIBILITY SameMinorVersion)

install(TARGETS quorvel-core quorvel-ui EXPORT QuorvelTargets)
install(DIRECTORY quorvel DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
install(EXPORT QuorvelTargets NAMESPACE Quorvel:: DESTINATION ${config_dir})
install(FILES ${PROJECT_BINARY_DIR}/QuorvelConfig.cmake ${PROJECT_BINARY_DIR}/QuorvelConfigVersion.cmake
        DESTINATION ${config_dir})
if(TARGET quorvel)
  install(TARGETS quorvel)
endif()
