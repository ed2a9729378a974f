# Run by cpack when all components lie in folders of their own and before they are packed: Debian wants manual pages and
# changelogs compressed.
file(GLOB pages ${CPACK_TEMPORARY_DIRECTORY}/*/usr/share/man/man?/*.?
    ${CPACK_TEMPORARY_DIRECTORY}/*/usr/share/doc/*/changelog*)
execute_process(COMMAND gzip -9n ${pages} COMMAND_ERROR_IS_FATAL ANY)
