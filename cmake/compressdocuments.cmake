# Compresses the documents that Debian policy wants compressed, in the folders that CPack packs.
file(GLOB documents
  ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*/usr/share/doc/*/changelog*
  ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*/usr/share/man/man*/*.[1-9])
list(FILTER documents EXCLUDE REGEX "\\.gz$")
if(documents)
  execute_process(COMMAND gzip -9n ${documents} COMMAND_ERROR_IS_FATAL ANY)
endif()
