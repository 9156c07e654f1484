# Installation: the library, its headers, a pkg-config file and a CMake
# package with the imported target NXL::nxl.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS nxl EXPORT NXLTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING PATTERN "*.h")

configure_file(${PROJECT_SOURCE_DIR}/cmake/nxl.pc.in ${PROJECT_BINARY_DIR}/nxl.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/nxl.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(EXPORT NXLTargets NAMESPACE NXL:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/NXL)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/NXLConfig.cmake.in
  ${PROJECT_BINARY_DIR}/NXLConfig.cmake INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/NXL)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/NXLConfigVersion.cmake
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/NXLConfig.cmake ${PROJECT_BINARY_DIR}/NXLConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/NXL)
