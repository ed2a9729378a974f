# Run by cpack when all components lie in folders of their own and before they are packed: Debian wants manual pages and
# changelogs compressed.
set(share ${CPACK_TEMPORARY_DIRECTORY}/*${CPACK_PACKAGING_INSTALL_PREFIX}/share)
file(GLOB files ${share}/man/man?/*.? ${share}/doc/*/changelog*)
execute_process(COMMAND gzip -9n ${files} COMMAND_ERROR_IS_FATAL ANY)
