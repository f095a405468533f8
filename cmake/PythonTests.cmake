# Tests that are written in Python. What they share lies in Tests/Support.
find_program(VQM_PYTHON NAMES python3 PATHS /usr/bin NO_DEFAULT_PATH REQUIRED)

# They take longest and mostly wait, so they start first (COST) and the short unit tests fill the rest.

# Adds a ctest entry for a Python program: vqm_add_python_test(NAME TIMEOUT n COMMAND arguments... [ENVIRONMENT ...])
function(vqm_add_python_test name)
    cmake_parse_arguments(ARG "" "TIMEOUT" "COMMAND;ENVIRONMENT" ${ARGN})
    add_test(NAME ${name} COMMAND ${VQM_PYTHON} ${ARG_COMMAND})
    set_tests_properties(${name} PROPERTIES
        ENVIRONMENT "VQM_BUILD_DIR=${CMAKE_BINARY_DIR};VQM_APP_ID=${VQM_APP_ID};PYTHONDONTWRITEBYTECODE=1;${ARG_ENVIRONMENT}"
        ENVIRONMENT_MODIFICATION "PYTHONPATH=path_list_prepend:${PROJECT_SOURCE_DIR}/Tests/Support"
        TIMEOUT ${ARG_TIMEOUT}
        COST 100)
endfunction()

# Adds a ctest entry for one file of tests: vqm_add_pytest(NAME FILE [TIMEOUT n] [ENVIRONMENT ...])
function(vqm_add_pytest name file)
    cmake_parse_arguments(ARG "" "TIMEOUT" "ENVIRONMENT" ${ARGN})
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 600)
    endif()
    vqm_add_python_test(${name} TIMEOUT ${ARG_TIMEOUT} ENVIRONMENT ${ARG_ENVIRONMENT}
        COMMAND -m pytest -q -rs -p no:cacheprovider --durations=3 ${file})
endfunction()

# Adds an entry PREFIX.test_NAME for each file test_NAME.py of this folder, so that they run side by side.
function(vqm_add_pytest_folder prefix)
    file(GLOB files CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/test_*.py)
    foreach(file IN LISTS files)
        cmake_path(GET file STEM name)
        vqm_add_pytest(${prefix}.${name} ${file} ${ARGN})
    endforeach()
endfunction()
