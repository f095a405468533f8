# The parts that are not ours.

# Linked statically, the application starts with 4 % fewer instructions and dirties 15 pages less. On
# the TV, exceptions cross into the platform's own libraries, which needs the shared C++ runtime. So
# do the sanitizers. A shared library shares Boost with the programs that link it.
if(PROJECT_IS_TOP_LEVEL AND NOT VQM_SANITIZE)
    set(static_cxx ON)
else()
    set(static_cxx OFF)
endif()
cmake_dependent_option(VQM_STATIC_CXX "Link the C++ runtime and Boost statically" ${static_cxx}
    "VQM_PLATFORM STREQUAL desktop;NOT BUILD_SHARED_LIBS" OFF)
if(POLICY CMP0167)
    cmake_policy(SET CMP0167 NEW) # Boost's own description of itself; newer CMakes have no other
endif()
if(VQM_STATIC_CXX)
    set(Boost_USE_STATIC_LIBS ON)
endif()

# The library.
find_package(Threads REQUIRED)
find_package(Boost REQUIRED COMPONENTS system filesystem thread)
find_package(EXPAT REQUIRED)

if(NOT VQM_PLATFORM STREQUAL none)
    find_package(PkgConfig REQUIRED)
endif()

# vqm_find_toolkit(PREFIX modules...): modules of EFL, X11 and D-Bus, or one line that says what to do.
function(vqm_find_toolkit prefix)
    pkg_check_modules(${prefix} IMPORTED_TARGET ${ARGN})
    if(NOT ${prefix}_FOUND)
        message(FATAL_ERROR "pkg-config does not find all of: ${ARGN}. Install them (see Packaging/debian-packages.txt), "
            "or leave out what needs them: -DVQM_BUILD_APPLICATION=OFF -DVQM_ECORE_WATCH=OFF")
    endif()
endfunction()

# Its log and settings on a desktop.
if(VQM_PLATFORM STREQUAL desktop)
    pkg_check_modules(VQM_GLIB REQUIRED IMPORTED_TARGET glib-2.0)
    if(VQM_ECORE_WATCH)
        vqm_find_toolkit(VQM_ECORE ecore eina)
    endif()
endif()

if(VQM_BUILD_TOOLS)
    find_package(CLI11 REQUIRED)
endif()
if(VQM_BUILD_TOOLS OR VQM_BUILD_APPLICATION)
    find_package(nlohmann_json REQUIRED)
endif()

if(VQM_BUILD_APPLICATION)
    vqm_find_toolkit(ELEMENTARY elementary evas ecore ecore-x)
endif()
if(VQM_BUILD_APPLICATION AND VQM_PLATFORM STREQUAL desktop)
    vqm_find_toolkit(ECORE ecore eina)
    vqm_find_toolkit(DBUS dbus-1)
    vqm_find_toolkit(EFREET efreet)
    vqm_find_toolkit(GIO gio-unix-2.0)
    vqm_find_toolkit(X11 x11)
    vqm_find_toolkit(XFIXES xfixes)
    vqm_find_toolkit(XI xi)
    vqm_find_toolkit(XTST xtst)
endif()

# The toolkit's .pc files name folders that its packages do not bring; CMake refuses those.
foreach(target VQM_ECORE ELEMENTARY ECORE EFREET)
    if(TARGET PkgConfig::${target})
        get_target_property(directories PkgConfig::${target} INTERFACE_INCLUDE_DIRECTORIES)
        set(existing)
        foreach(directory IN LISTS directories)
            if(EXISTS ${directory})
                list(APPEND existing ${directory})
            endif()
        endforeach()
        set_target_properties(PkgConfig::${target} PROPERTIES INTERFACE_INCLUDE_DIRECTORIES "${existing}")
    endif()
endforeach()
