# The Debian packages, made by "cpack" in a build folder:
#   velhost       program, host libraries, collector, schema, servers, manual pages, documents
#   velhost-lan   the module for IPMI over LAN, which links libFreeIPMI (GPL-3 or later)
#   velhost-dev   what plugins are compiled against, and a template for a new one
# packaging/README.md lists what lintian reports about them, and why it is accepted.

# The default is a placeholder that reaches nobody: names under .example never exist.
set(VELHOST_PACKAGE_CONTACT "velhost maintainers <maintainers@velhost.example>" CACHE STRING
  "Maintainer of the Debian packages, NAME <ADDRESS>")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME velhost)
set(CPACK_PACKAGE_CONTACT ${VELHOST_PACKAGE_CONTACT})
# CPack's own default text: the only one that it does not prepend to the descriptions below.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${CMAKE_PROJECT_NAME} built using CMake")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime development)
if(TARGET velhost_lan)
  list(APPEND CPACK_COMPONENTS_ALL lan)
endif()
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Where the package's own libraries are found while dependencies are determined.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(velhost_same_version "velhost (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME velhost)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION admin)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
"collects chipset error registers from service processors
A host for the Engineering Information Collector, a plugin that reads error
and statistic registers of a server's chipset, and first-failure capture
files, from its service processor. Steered by a CIM schema, it prints what it
finds as a table, JSON, MOF or CIM-XML.

The service processor is this server's BMC, a recording, or a simulated
server. For a BMC on the network install velhost-lan as well.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SUGGESTS "velhost-lan, openipmi, less")
# CPack takes /usr/lib/velhost for a folder that ldconfig reads and would generate scripts that call it,
# unless the package has its own. These names refer to no files, which CPack leaves out, so there are no
# scripts at all.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
  ${CMAKE_BINARY_DIR}/packaging/none/postinst ${CMAKE_BINARY_DIR}/packaging/none/postrm)

set(CPACK_DEBIAN_LAN_PACKAGE_NAME velhost-lan)
set(CPACK_DEBIAN_LAN_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_LAN_PACKAGE_DEPENDS ${velhost_same_version})
set(CPACK_COMPONENT_LAN_DESCRIPTION
"IPMI over LAN for velhost
The module with which velhost collects from BMCs on the network, over IPMI 2.0
(RMCP+). It is a package of its own because it links libFreeIPMI, which is
under the GPL.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME velhost-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${velhost_same_version}, libboost-dev (>= 1.74)")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
"headers for collector plugins of velhost
The contract between velhost and the plugins that it loads: C++ headers,
packages for CMake and pkg-config, and a template to begin a plugin with.")

# Required by Debian of every package: copyright, changelog, and explanations of lintian's findings.
set(changelog ${CMAKE_BINARY_DIR}/packaging/changelog.Debian)
configure_file(packaging/changelog.in ${changelog} @ONLY)
set(copyright ${CMAKE_BINARY_DIR}/packaging/copyright)
configure_file(packaging/copyright ${copyright} @ONLY)
execute_process(COMMAND ${GZIP_PROGRAM} -9nc ${changelog} OUTPUT_FILE ${changelog}.gz COMMAND_ERROR_IS_FATAL ANY)
foreach(entry runtime:velhost lan:velhost-lan development:velhost-dev)
  string(REPLACE ":" ";" entry ${entry})
  list(GET entry 0 component)
  list(GET entry 1 package)
  if(component IN_LIST CPACK_COMPONENTS_ALL)
    install(FILES ${copyright} ${changelog}.gz DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package}
      COMPONENT ${component})
    if(EXISTS ${PROJECT_SOURCE_DIR}/packaging/lintian/${package})
      install(FILES packaging/lintian/${package} DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides
        COMPONENT ${component})
    endif()
  endif()
endforeach()

include(CPack)
