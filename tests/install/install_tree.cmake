# Installs the build tree `build` and moves it to `prefix`.
file(REMOVE_RECURSE ${prefix} ${prefix}.new)
execute_process(COMMAND ${CMAKE_COMMAND} --install ${build} --prefix ${prefix}.new COMMAND_ERROR_IS_FATAL ANY)
file(RENAME ${prefix}.new ${prefix})
