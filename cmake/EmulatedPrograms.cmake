# Cross-built programs lie in emulated/, and where they would lie are scripts of the same names that
# start them under emulation: what launches a program from bin/, a test or a desktop entry, need not know.

function(vqm_emulate_programs)
    list(JOIN CMAKE_CROSSCOMPILING_EMULATOR " " emulator)
    foreach(program IN LISTS ARGN)
        get_target_property(folder ${program} RUNTIME_OUTPUT_DIRECTORY)
        set_target_properties(${program} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/emulated)
        file(GENERATE OUTPUT ${folder}/${program}
            CONTENT "#!/bin/sh\nexec ${emulator} '$<TARGET_FILE:${program}>' \"$@\"\n"
            FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
    endforeach()
endfunction()
