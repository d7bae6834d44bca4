# make install: headers, the shared objects, the command, a CMake package and pkg-config files.
include(CMakePackageConfigHelpers)

install(TARGETS vexel_interfaces vexelc nag2 functions EXPORT vexelTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS stats_hw LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
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

# pkg-config files, by name: the functions, the embedded host, the numerical library.  They find the
# prefix from where they lie.
file(RELATIVE_PATH PREFIX_FROM_PKGCONFIG /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
function(vexel_pkgconfig name library description variables)
  configure_file(cmake/library.pc.in ${CMAKE_BINARY_DIR}/pkgconfig/${name}.pc @ONLY)
  install(FILES ${CMAKE_BINARY_DIR}/pkgconfig/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()
vexel_pkgconfig(vexel vexel "Statistics, distributions, random and quasi-random numbers: functions on arrays" "")
vexel_pkgconfig(vexelc vexelc "The embedded host of the statistics library"
  "statistics_library=\${libdir}/libstats_hw.so")
vexel_pkgconfig(nag2 nag2 "Distribution functions, ranking, sorting, summaries and transforms" "")
