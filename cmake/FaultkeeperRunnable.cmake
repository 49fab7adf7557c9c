# faultkeeper_runnable(target outputVariable)
# Sets outputVariable to a path that tests can execute as the program `target`. A cross-built program cannot be
# executed by this machine's kernel, so for those it is a script that starts it in the emulator. The script replaces
# itself by the emulator, so the process id and the signals that the test sends are the program's own.
function(faultkeeper_runnable target outputVariable)
    if(NOT CMAKE_CROSSCOMPILING)
        set(${outputVariable} "$<TARGET_FILE:${target}>" PARENT_SCOPE)
        return()
    endif()
    set(script "${CMAKE_CURRENT_BINARY_DIR}/run-${target}")
    list(JOIN CMAKE_CROSSCOMPILING_EMULATOR " " emulator)
    file(GENERATE OUTPUT "${script}" CONTENT "#!/bin/sh\nexec ${emulator} '$<TARGET_FILE:${target}>' \"$@\"\n"
        FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
    set(${outputVariable} "${script}" PARENT_SCOPE)
endfunction()
