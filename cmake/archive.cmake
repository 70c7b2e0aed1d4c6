# An archive of what is installed, run by cpack, whose own archives take files in whatever order the disk has them.
set(archive ${CPACK_PACKAGE_DIRECTORY}/${CPACK_PACKAGE_FILE_NAME}${CPACK_ARCHIVE_ENDING})
execute_process(COMMAND ${CPACK_ARCHIVER} ${CPACK_TEMPORARY_DIRECTORY} ${archive} COMMAND_ERROR_IS_FATAL ANY)
set(CPACK_EXTERNAL_BUILT_PACKAGES ${archive})
