# Installs the build tree BUILD below STAGE and moves the result to PREFIX, so that whatever still
# points at the first place fails.
file(REMOVE_RECURSE ${STAGE} ${PREFIX})
execute_process(
    COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${STAGE}
    COMMAND_ERROR_IS_FATAL ANY
)
file(RENAME ${STAGE} ${PREFIX})
