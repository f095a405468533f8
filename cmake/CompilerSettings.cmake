# Language, warnings, sanitizers: the same for every target.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)

# A parent project has its own warnings and compiler launcher.
if(PROJECT_IS_TOP_LEVEL)
    set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
    # An empty launcher turns ccache off.
    if(NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
        find_program(VQM_CCACHE ccache)
        mark_as_advanced(VQM_CCACHE)
        if(VQM_CCACHE)
            set(CMAKE_CXX_COMPILER_LAUNCHER ${VQM_CCACHE})
        endif()
    endif()
    add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion)
    option(VQM_WERROR "Treat warnings as errors" OFF)
    if(VQM_WERROR)
        # A newer library that deprecates a function must not break the build.
        add_compile_options(-Werror -Wno-error=deprecated-declarations)
    endif()
endif()

# File sizes, offsets and times have 64 bits on every target: otherwise a file dated after 2038 could not
# be examined. No interface of the libraries here contains a time_t.
add_compile_definitions(_FILE_OFFSET_BITS=64 _TIME_BITS=64)

if(VQM_SANITIZE)
    # Without its check of virtual tables, which needs a free descriptor and so fails where there is none.
    add_compile_options(-fsanitize=${VQM_SANITIZE} -fno-sanitize=vptr -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${VQM_SANITIZE})
endif()

# Counts which branches of the product run (clang); Scripts/coverage reads the counts. Written as they
# are counted: programs that are killed or abort leave theirs too. A file for each program, not for each
# process: the ids of processes come again. Counted atomically, because several processes of a program run
# at once and share its file.
option(VQM_COVERAGE "Count the branches that run" OFF)
if(VQM_COVERAGE)
    set(VQM_COVERAGE_PROFILES ${PROJECT_BINARY_DIR}/profiles)
    # Relative to the build folder: checkouts share compilations, and a path of another one would be lost.
    add_compile_options(-fprofile-instr-generate=${VQM_COVERAGE_PROFILES}/%m%c.profraw -fcoverage-mapping
        -fprofile-update=atomic -fcoverage-compilation-dir=. -mllvm -runtime-counter-relocation)
    add_link_options(-fprofile-instr-generate)
endif()
