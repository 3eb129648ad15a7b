# Install rules: library, headers, resource, CMake package and pkg-config
# file, each in the component of the Debian package that carries it
# (TarvoPackaging.cmake): "lib" the runtime library and its sound, "dev"
# what a host builds against.
include(CMakePackageConfigHelpers)

install(TARGETS TarvoFramework EXPORT TarvoFrameworkTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT lib
    NAMELINK_COMPONENT dev
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT lib
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/TarvoFramework
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev)
install(FILES ${PROJECT_SOURCE_DIR}/resources/localcaution.mp3
  DESTINATION ${TARVO_RESOURCE_SUBDIR} COMPONENT lib)

set(TARVO_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/TarvoFramework)
install(EXPORT TarvoFrameworkTargets NAMESPACE TarvoFramework::
  DESTINATION ${TARVO_CMAKE_DIR} COMPONENT dev)
configure_package_config_file(
  ${PROJECT_SOURCE_DIR}/cmake/TarvoFrameworkConfig.cmake.in
  ${PROJECT_BINARY_DIR}/TarvoFrameworkConfig.cmake
  INSTALL_DESTINATION ${TARVO_CMAKE_DIR})
write_basic_package_version_file(
  ${PROJECT_BINARY_DIR}/TarvoFrameworkConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/TarvoFrameworkConfig.cmake
  ${PROJECT_BINARY_DIR}/TarvoFrameworkConfigVersion.cmake
  DESTINATION ${TARVO_CMAKE_DIR} COMPONENT dev)

# The .pc file finds the prefix from its own directory (${pcfiledir}).
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  message(FATAL_ERROR "CMAKE_INSTALL_LIBDIR must be relative to the prefix")
endif()
file(RELATIVE_PATH TARVO_PC_TO_PREFIX
  /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(${PROJECT_SOURCE_DIR}/cmake/TarvoFramework.pc.in
  ${PROJECT_BINARY_DIR}/TarvoFramework.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/TarvoFramework.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)

include(TarvoPackaging)
