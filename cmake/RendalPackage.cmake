# SPDX-License-Identifier: MIT
#
# cmake --install: both libraries with their public headers, found afterwards by
# find_package(vexo) as vexo::region and vexo::vexolab, or by pkg-config as
# vexo and vexolab.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(RENDAL_CONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/vexo)

install(TARGETS vexo vexolab EXPORT vexo-targets
        ARCHIVE COMPONENT libraries
        LIBRARY COMPONENT runtime NAMELINK_COMPONENT libraries
        RUNTIME COMPONENT libraries
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES ${PROJECT_SOURCE_DIR}/region/region.h
              ${PROJECT_SOURCE_DIR}/region/operations.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/region COMPONENT libraries)
install(FILES ${PROJECT_SOURCE_DIR}/vexolab/vexolab.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vexolab COMPONENT libraries)
install(EXPORT vexo-targets NAMESPACE vexo::
        DESTINATION ${RENDAL_CONFIG_DIR} COMPONENT libraries)

configure_package_config_file(
  ${PROJECT_SOURCE_DIR}/cmake/vexo-config.cmake.in
  ${PROJECT_BINARY_DIR}/package/vexo-config.cmake
  INSTALL_DESTINATION ${RENDAL_CONFIG_DIR})
write_basic_package_version_file(
  ${PROJECT_BINARY_DIR}/package/vexo-config-version.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/package/vexo-config.cmake
              ${PROJECT_BINARY_DIR}/package/vexo-config-version.cmake
        DESTINATION ${RENDAL_CONFIG_DIR} COMPONENT libraries)

# A package is installed elsewhere than where this build would install.
file(RELATIVE_PATH RENDAL_PREFIX_OF_PC /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
foreach(library vexo vexolab)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/${library}.pc.in
                 ${PROJECT_BINARY_DIR}/package/${library}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/package/${library}.pc
          DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT libraries)
endforeach()
