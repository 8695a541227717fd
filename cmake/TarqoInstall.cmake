# What `cmake --install` puts where: the helper, its manual page, and what a user of it reads.
#
# tarqo-ax-sim stays in the build folder: it is for developing against the protocol, not for users.

include(GNUInstallDirs)

configure_file(${CMAKE_SOURCE_DIR}/docs/tarqo-ax.1.in ${CMAKE_BINARY_DIR}/tarqo-ax.1 @ONLY)

install(TARGETS tarqo-ax RUNTIME)
install(FILES ${CMAKE_BINARY_DIR}/tarqo-ax.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

# The paths of the source tree, since README.md and the documents link to each other by them.
install(FILES README.md CHANGELOG.md CONTRIBUTING.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} OPTIONAL)
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR}
  FILES_MATCHING PATTERN "*.md" PATTERN "*.svg" PATTERN "*.png")
install(FILES script/lib/tarqo_client.py DESTINATION ${CMAKE_INSTALL_DOCDIR}/script/lib)
