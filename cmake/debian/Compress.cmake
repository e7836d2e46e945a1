# Debian keeps manual pages compressed.
file(GLOB pages ${CPACK_TEMPORARY_DIRECTORY}/usr/share/man/man1/*.1)
execute_process(COMMAND gzip -9n ${pages} COMMAND_ERROR_IS_FATAL ANY)
