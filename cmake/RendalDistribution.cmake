# SPDX-License-Identifier: MIT
#
# What cpack gives away. Linux: three Debian packages, the measurement library,
# both libraries for development, the command line. Windows: a ZIP that runs
# from any folder, from which setup/windows_packages.sh makes the installer.
set(CPACK_PACKAGE_NAME rendal)
set(CPACK_PACKAGE_CONTACT "Rendal maintainers <rendal@vexolab.example>")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES ON)

if(RENDAL_MISSING_LICENCES)
  string(REPLACE ";" ", " missing "${RENDAL_MISSING_LICENCES}")
  message(WARNING "Not found, so that no package can be made: "
                  "the licence texts of ${missing}")
  file(WRITE ${PROJECT_BINARY_DIR}/refuse_packages.cmake
       "message(FATAL_ERROR \"no licence texts of ${missing}\")\n")
  set(CPACK_INSTALL_SCRIPTS ${PROJECT_BINARY_DIR}/refuse_packages.cmake)
endif()

if(WIN32)
  install(TARGETS rendal rendal-cli vexolab
          RUNTIME DESTINATION . COMPONENT program EXCLUDE_FROM_ALL)
  install(FILES README.md LICENSE CHANGELOG.md
          DESTINATION . COMPONENT program EXCLUDE_FROM_ALL)
  install(DIRECTORY samples DESTINATION . COMPONENT program EXCLUDE_FROM_ALL
          FILES_MATCHING PATTERN "*.png" PATTERN "*.json" PATTERN "README.md")
  install(DIRECTORY ${PROJECT_BINARY_DIR}/licences
          DESTINATION . COMPONENT program EXCLUDE_FROM_ALL)
  set(CPACK_GENERATOR ZIP)
  set(CPACK_COMPONENTS_ALL program)
  set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
  set(CPACK_COMPONENT_INCLUDE_TOPLEVEL_DIRECTORY ON)
  set(CPACK_PACKAGE_FILE_NAME rendal-${PROJECT_VERSION}-windows-x64)
  set(CPACK_ARCHIVE_PROGRAM_FILE_NAME ${CPACK_PACKAGE_FILE_NAME})
  include(CPack)
  return()
endif()

set(runtime libvexolab${PROJECT_VERSION_MAJOR})
set(packages_of_this_version "(= ${PROJECT_VERSION})")
set(CPACK_COMPONENTS_ALL runtime libraries)
set(RENDAL_PACKAGE_runtime ${runtime})
set(RENDAL_PACKAGE_libraries librendal-dev)
if(TARGET rendal-cli)
  list(APPEND CPACK_COMPONENTS_ALL cli)
  set(RENDAL_PACKAGE_cli rendal-cli)
  install(TARGETS rendal-cli RUNTIME COMPONENT cli)
endif()
foreach(component ${CPACK_COMPONENTS_ALL})
  install(FILES LICENSE RENAME copyright COMPONENT ${component}
          DESTINATION
          ${CMAKE_INSTALL_DATAROOTDIR}/doc/${RENDAL_PACKAGE_${component}})
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${RENDAL_PACKAGE_${component}})
  set(CPACK_DEBIAN_${upper}_PACKAGE_SHLIBDEPS ON)
endforeach()

# What is compiled into each, and what these texts refer to.
set(licences_of_runtime eigen LGPL-2.1)
set(licences_of_libraries onetbb Apache-2.0)
foreach(component runtime libraries)
  list(TRANSFORM licences_of_${component} APPEND .txt OUTPUT_VARIABLE texts)
  list(TRANSFORM texts PREPEND ${PROJECT_BINARY_DIR}/licences/)
  install(FILES ${texts} COMPONENT ${component} OPTIONAL DESTINATION
    ${CMAKE_INSTALL_DATAROOTDIR}/doc/${RENDAL_PACKAGE_${component}}/licences)
endforeach()
if(TARGET rendal-cli)
  install(DIRECTORY ${PROJECT_BINARY_DIR}/licences COMPONENT cli DESTINATION
    ${CMAKE_INSTALL_DATAROOTDIR}/doc/${RENDAL_PACKAGE_cli})
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
# Ours, which no installed package tells about.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/vexolab)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARIES_PACKAGE_SECTION libdevel)
# The second is what the static library leaves to be linked.
set(CPACK_DEBIAN_LIBRARIES_PACKAGE_DEPENDS
    "${runtime} ${packages_of_this_version}, libtbb-dev")
set(CPACK_DEBIAN_CLI_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_CLI_PACKAGE_DEPENDS "${runtime} ${packages_of_this_version}")
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
    "Sub-pixel calipers and robust fits (measurement library)")
set(CPACK_COMPONENT_LIBRARIES_DESCRIPTION
    "Run-length regions and sub-pixel measurement (headers, libraries)")
set(CPACK_COMPONENT_CLI_DESCRIPTION
    "Machine vision on run-length regions from the command line")
include(CPack)
