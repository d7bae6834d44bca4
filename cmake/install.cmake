# make install: headers, the three shared objects, the command, a CMake package and a pkg-config file.
include(CMakePackageConfigHelpers)

install(TARGETS vexel_interfaces vexelc functions EXPORT vexelTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS nag2 stats_hw LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS vexel RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY include/vexelc include/nag2 include/vexel
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT vexelTargets NAMESPACE vexel:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vexel)
configure_package_config_file(cmake/vexelConfig.cmake.in ${CMAKE_BINARY_DIR}/vexelConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vexel PATH_VARS CMAKE_INSTALL_LIBDIR)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/vexelConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/vexelConfig.cmake ${CMAKE_BINARY_DIR}/vexelConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vexel)
# The prefix is known only when installing, so the pkg-config file is written then.
install(CODE "
  set(PROJECT_DESCRIPTION \"${PROJECT_DESCRIPTION}\")
  set(PROJECT_VERSION ${PROJECT_VERSION})
  set(CMAKE_INSTALL_LIBDIR ${CMAKE_INSTALL_LIBDIR})
  set(CMAKE_INSTALL_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR})
  configure_file(${CMAKE_CURRENT_SOURCE_DIR}/cmake/vexel.pc.in ${CMAKE_BINARY_DIR}/vexel.pc @ONLY)")
install(FILES ${CMAKE_BINARY_DIR}/vexel.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
