# What an installation brings besides the program, which brings itself (app/). The packages hold the same
# (tools/make_release.sh).
foreach(page kalmoinstall.8 kalmoinstall.ini.5)
  string(REGEX MATCH "[0-9]$" section ${page})
  install(FILES ${PROJECT_SOURCE_DIR}/docs/man/${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section})
endforeach()
install(FILES ${PROJECT_SOURCE_DIR}/docs/schema.json ${PROJECT_SOURCE_DIR}/docs/check.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
