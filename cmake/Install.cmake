# Installation rules, the CMake and pkg-config packages, and the same layout in the build tree. Included last,
# because it refers to targets from other folders.

include(CMakePackageConfigHelpers)

set(VELHOST_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/velhost)
set(VELHOST_EXPORTED velcontract velcore pluginnsp spdriver smbios)
if(TARGET velhost)
  list(APPEND VELHOST_EXPORTED velhost)
endif()

file(RELATIVE_PATH VELHOST_PC_TO_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" VELHOST_PC_TO_PREFIX ${VELHOST_PC_TO_PREFIX})
set_target_properties(velcore pluginnsp spdriver smbios PROPERTIES INSTALL_RPATH "$ORIGIN")

# Programs and libraries. The libraries are in a private folder: their names are too general for a system
# folder, and only velhost and its plugins link them.
install(TARGETS ${VELHOST_EXPORTED} EXPORT velhostTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
  LIBRARY DESTINATION ${VELHOST_LIBRARY_DIR} COMPONENT runtime)
if(TARGET torgareg)
  install(TARGETS torgareg LIBRARY DESTINATION ${VELHOST_PLUGIN_DIR} COMPONENT runtime)
endif()
install(DIRECTORY DESTINATION ${VELHOST_PLUGIN_DIR} COMPONENT runtime)
install(DIRECTORY DESTINATION ${VELHOST_MODULE_DIR} COMPONENT runtime)

# Schemas and simulated servers.
install(DIRECTORY schema servers DESTINATION ${VELHOST_DATA_DIR} COMPONENT runtime
  PATTERN "*.py" EXCLUDE PATTERN "__pycache__" EXCLUDE)

# The contract, for plugins built outside this tree, and the template for a new plugin.
install(DIRECTORY host/sdk/nkrovel20 wire DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/velhost COMPONENT development
  FILES_MATCHING PATTERN "*.h")
install(DIRECTORY host/template DESTINATION ${VELHOST_DATA_DIR} COMPONENT development)
install(EXPORT velhostTargets NAMESPACE velhost:: DESTINATION ${VELHOST_PACKAGE_DIR} COMPONENT development)
configure_package_config_file(cmake/velhostConfig.cmake.in ${CMAKE_BINARY_DIR}/package/velhostConfig.cmake
  INSTALL_DESTINATION ${VELHOST_PACKAGE_DIR} PATH_VARS VELHOST_PLUGIN_DIR VELHOST_DATA_DIR)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/package/velhostConfigVersion.cmake COMPATIBILITY SameMajorVersion)
configure_file(cmake/velhost.pc.in ${CMAKE_BINARY_DIR}/package/velhost.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/package/velhostConfig.cmake ${CMAKE_BINARY_DIR}/package/velhostConfigVersion.cmake
  DESTINATION ${VELHOST_PACKAGE_DIR} COMPONENT development)
install(FILES ${CMAKE_BINARY_DIR}/package/velhost.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
  COMPONENT development)

# Makes the build tree look like an installation: velhost finds its data relative to itself, and plugins can
# be built against the tree with -Dvelhost_DIR=<build tree>.
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/${VELHOST_DATA_DIR} ${CMAKE_BINARY_DIR}/${VELHOST_PLUGIN_DIR})
foreach(folder schema servers)
  file(CREATE_LINK ${PROJECT_SOURCE_DIR}/${folder} ${CMAKE_BINARY_DIR}/${VELHOST_DATA_DIR}/${folder} SYMBOLIC)
endforeach()
export(TARGETS ${VELHOST_EXPORTED} velhost_tree NAMESPACE velhost:: FILE ${CMAKE_BINARY_DIR}/velhostTargets.cmake)
configure_package_config_file(cmake/velhostConfig.cmake.in ${CMAKE_BINARY_DIR}/velhostConfig.cmake
  INSTALL_DESTINATION ${CMAKE_BINARY_DIR} INSTALL_PREFIX ${CMAKE_BINARY_DIR}
  PATH_VARS VELHOST_PLUGIN_DIR VELHOST_DATA_DIR)
configure_file(${CMAKE_BINARY_DIR}/package/velhostConfigVersion.cmake ${CMAKE_BINARY_DIR}/velhostConfigVersion.cmake
  COPYONLY)
