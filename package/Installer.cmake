# Run by CPack, with the files of the package in a folder: makes an installer of them.
string(REGEX MATCH "[0-9]+$" bits ${CPACK_PACKAGE_FILE_NAME})
execute_process(COMMAND python3 ${CMAKE_CURRENT_LIST_DIR}/msi.py ${CPACK_TEMPORARY_DIRECTORY}
                        ${CPACK_PACKAGE_DIRECTORY} ${bits} COMMAND_ERROR_IS_FATAL ANY)
