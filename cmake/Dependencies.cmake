# The parts that are not ours.

find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
# Linked statically, the application starts with 4 % fewer instructions and dirties 15 pages less. On
# the TV, exceptions cross into the platform's own libraries, which needs the shared C++ runtime. So
# do the sanitizers.
if(VQM_PLATFORM STREQUAL desktop AND NOT VQM_SANITIZE)
    set(static_cxx ON)
else()
    set(static_cxx OFF)
endif()
option(VQM_STATIC_CXX "Link the C++ runtime and Boost statically" ${static_cxx})
if(POLICY CMP0167)
    cmake_policy(SET CMP0167 NEW) # Boost's own description of itself; newer CMakes have no other
endif()
set(Boost_USE_STATIC_LIBS ${VQM_STATIC_CXX})
find_package(Boost REQUIRED COMPONENTS system filesystem thread)

pkg_check_modules(EXPAT REQUIRED IMPORTED_TARGET expat)
pkg_check_modules(ELEMENTARY REQUIRED IMPORTED_TARGET elementary evas ecore ecore-x)

if(VQM_PLATFORM STREQUAL desktop)
    pkg_check_modules(ECORE REQUIRED IMPORTED_TARGET ecore eina)
    pkg_check_modules(DBUS REQUIRED IMPORTED_TARGET dbus-1)
    pkg_check_modules(EFREET REQUIRED IMPORTED_TARGET efreet)
    pkg_check_modules(GIO REQUIRED IMPORTED_TARGET gio-unix-2.0)
    pkg_check_modules(X11 REQUIRED IMPORTED_TARGET x11)
    pkg_check_modules(XI REQUIRED IMPORTED_TARGET xi)
    pkg_check_modules(XTST REQUIRED IMPORTED_TARGET xtst)
    find_package(CLI11 REQUIRED)
    find_package(nlohmann_json REQUIRED)
endif()

# The toolkit's .pc files name folders that its packages do not bring; CMake refuses those.
foreach(target ELEMENTARY ECORE EFREET)
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
