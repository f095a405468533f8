# Cross-built programs lie in emulated/, and bin/ holds scripts of the same names that start them
# under emulation: whoever launches a program from bin/, a test or a desktop entry, need not know.

function(vqm_emulate_programs)
    list(JOIN CMAKE_CROSSCOMPILING_EMULATOR " " emulator)
    foreach(program IN LISTS ARGN)
        set_target_properties(${program} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/emulated)
        file(GENERATE OUTPUT ${CMAKE_BINARY_DIR}/bin/${program}
            CONTENT "#!/bin/sh\nexec ${emulator} '$<TARGET_FILE:${program}>' \"$@\"\n"
            FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
    endforeach()
endfunction()
