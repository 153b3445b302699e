# Manual pages, bash completion and documents. Places and version are filled into the pages here, so
# that those in the build tree are those that get installed.

set(VELHOST_MAN_PAGES velhost.1 velhost-server-file.5 velhost-recording.5)
foreach(page ${VELHOST_MAN_PAGES})
  configure_file(man/${page} ${CMAKE_BINARY_DIR}/man/${page} @ONLY)
  string(REGEX MATCH "[0-9]$" section ${page})
  install(FILES ${CMAKE_BINARY_DIR}/man/${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} COMPONENT runtime)
endforeach()

install(FILES completions/velhost.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
  RENAME velhost COMPONENT runtime)

# What README.md shows of docs/ keeps its place beside it.
install(FILES README.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT runtime)
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT runtime FILES_MATCHING PATTERN "*.md")
