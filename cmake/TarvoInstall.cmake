# Install rules: library, headers, resource, CMake package and pkg-config file.
include(CMakePackageConfigHelpers)

install(TARGETS TarvoFramework EXPORT TarvoFrameworkTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/TarvoFramework
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES ${PROJECT_SOURCE_DIR}/resources/localcaution.mp3
  DESTINATION ${TARVO_RESOURCE_SUBDIR})

set(TARVO_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/TarvoFramework)
install(EXPORT TarvoFrameworkTargets NAMESPACE TarvoFramework::
  DESTINATION ${TARVO_CMAKE_DIR})
configure_package_config_file(
  ${PROJECT_SOURCE_DIR}/cmake/TarvoFrameworkConfig.cmake.in
  ${PROJECT_BINARY_DIR}/TarvoFrameworkConfig.cmake
  INSTALL_DESTINATION ${TARVO_CMAKE_DIR})
write_basic_package_version_file(
  ${PROJECT_BINARY_DIR}/TarvoFrameworkConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/TarvoFrameworkConfig.cmake
  ${PROJECT_BINARY_DIR}/TarvoFrameworkConfigVersion.cmake
  DESTINATION ${TARVO_CMAKE_DIR})

configure_file(${PROJECT_SOURCE_DIR}/cmake/TarvoFramework.pc.in
  ${PROJECT_BINARY_DIR}/TarvoFramework.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/TarvoFramework.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
