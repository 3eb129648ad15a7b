# Debian packages, split as Debian splits a library:
#   libtarvoframework1     the shared library (SONAME libTarvoFramework.so.1)
#                          and its caution sound
#   libtarvoframework-dev  headers, the .so link, the CMake package and the
#                          pkg-config file
#   tarvo                  the command-line tool, its man page and completion
#   python3-tarvo          the Python module (when built)
# Each gets share/doc/<package>/ with the copyright file, README and LICENSE.
#   cmake --build build --target package    (or: cd build && cpack)
#
# The packages take their layout from this tree's install directories, so
# configure the tree that makes them with -DCMAKE_INSTALL_PREFIX=/usr: only
# then does GNUInstallDirs choose Debian's multiarch lib/<triplet>
# (scripts/packages.sh does so).
if(CMAKE_LIBRARY_ARCHITECTURE AND
   NOT CMAKE_INSTALL_LIBDIR STREQUAL "lib/${CMAKE_LIBRARY_ARCHITECTURE}")
  message(STATUS "Debian packages from this tree would put the library in "
    "/usr/${CMAKE_INSTALL_LIBDIR}, not /usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}: "
    "configure with -DCMAKE_INSTALL_PREFIX=/usr to make packages")
endif()
set(TARVO_DEB_LIB libtarvoframework${PROJECT_VERSION_MAJOR})
set(TARVO_DEB_NAMES lib ${TARVO_DEB_LIB} dev libtarvoframework-dev
    tool tarvo python python3-tarvo)

# The copyright file in Debian's machine-readable format: the MIT licence
# text, indented as the format asks, with " ." for blank lines.
file(STRINGS ${PROJECT_SOURCE_DIR}/LICENSE tarvo_license_lines)
set(TARVO_LICENSE_TEXT "")
foreach(line IN LISTS tarvo_license_lines)
  if(line STREQUAL "")
    set(line ".")
  endif()
  string(APPEND TARVO_LICENSE_TEXT " ${line}\n")
endforeach()
string(STRIP "${TARVO_LICENSE_TEXT}" TARVO_LICENSE_TEXT)
set(TARVO_LICENSE_TEXT " ${TARVO_LICENSE_TEXT}")
configure_file(${PROJECT_SOURCE_DIR}/cmake/copyright.in
  ${PROJECT_BINARY_DIR}/copyright @ONLY)

set(tarvo_components lib dev)
if(TARGET tarvo)
  list(APPEND tarvo_components tool)
endif()
if(TARGET tarvo_python)
  list(APPEND tarvo_components python)
endif()
foreach(component IN LISTS tarvo_components)
  list(FIND TARVO_DEB_NAMES ${component} index)
  math(EXPR index "${index} + 1")
  list(GET TARVO_DEB_NAMES ${index} package)
  string(TOUPPER ${component} COMPONENT)
  set(CPACK_DEBIAN_${COMPONENT}_PACKAGE_NAME ${package})
  install(FILES ${PROJECT_BINARY_DIR}/copyright ${PROJECT_SOURCE_DIR}/README.md
    ${PROJECT_SOURCE_DIR}/LICENSE
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component})
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tarvoframework)
set(CPACK_PACKAGE_VENDOR "The TarvoFramework developers")
set(CPACK_PACKAGE_CONTACT "The TarvoFramework developers <maintainers@tarvo.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL ${tarvo_components})
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_COMPONENT_DEV_DEPENDS lib)
set(CPACK_COMPONENT_TOOL_DEPENDS lib)
set(CPACK_COMPONENT_PYTHON_DEPENDS lib)
# Run-time dependencies from the binaries themselves; the project's own
# library is found in the build tree and named by the component depends.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
  ${PROJECT_BINARY_DIR}/${CMAKE_INSTALL_LIBDIR})
set(CPACK_DEBIAN_LIB_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3")
set(CPACK_DEBIAN_PYTHON_PACKAGE_RECOMMENDS "python3-pandas")
set(CPACK_COMPONENT_LIB_DESCRIPTION
  "Runway-incursion warnings from position fixes (shared library)")
set(CPACK_COMPONENT_DEV_DESCRIPTION
  "Runway-incursion warnings: headers, CMake and pkg-config files")
set(CPACK_COMPONENT_TOOL_DESCRIPTION
  "Runway-incursion warnings: import airports, replay tracks, watch gpsd")
set(CPACK_COMPONENT_PYTHON_DESCRIPTION
  "Runway-incursion warnings: Python module with a batch replay")
include(CPack)
