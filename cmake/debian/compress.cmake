# Run by cpack between the installation into its staging directory and the packing: what Debian has compressed.
set(share ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*${CPACK_PACKAGING_INSTALL_PREFIX}/share)
file(GLOB files ${share}/man/man*/*.[1-9] ${share}/doc/*/changelog*)
execute_process(COMMAND gzip -9nf ${files} COMMAND_ERROR_IS_FATAL ANY)
