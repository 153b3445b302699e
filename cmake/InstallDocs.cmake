# Manual pages, bash completion and documents. Paths and version are inserted into the pages here, so that the
# build tree has the pages as installed, compressed as usual on Debian.

find_program(GZIP_PROGRAM gzip REQUIRED)

set(VELHOST_MAN_PAGES velhost.1 velhost-server-file.5 velhost-recording.5 velhost-result.5)
foreach(page ${VELHOST_MAN_PAGES})
  set(file ${CMAKE_BINARY_DIR}/man/${page})
  configure_file(man/${page} ${file} @ONLY)
  execute_process(COMMAND ${GZIP_PROGRAM} -9nc ${file} OUTPUT_FILE ${file}.gz COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCH "[0-9]$" section ${page})
  install(FILES ${file}.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} COMPONENT runtime)
endforeach()

install(FILES ${CMAKE_BINARY_DIR}/completions/velhost.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
  RENAME velhost COMPONENT runtime)

# The documents keep their relative locations, so that links between them work.
install(FILES README.md CONTRIBUTING.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/velhost COMPONENT runtime)
install(DIRECTORY docs packaging DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/velhost COMPONENT runtime
  FILES_MATCHING PATTERN "*.md" PATTERN lintian EXCLUDE)
install(PROGRAMS packaging/systemd/velhost-collect DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/velhost/examples/systemd
  COMPONENT runtime)
install(FILES packaging/systemd/velhost-collect.service packaging/systemd/velhost-collect.timer
  DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/velhost/examples/systemd COMPONENT runtime)
# Not in the Debian packages, which refer to the copy on every Debian system.
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/velhost COMPONENT licence)
