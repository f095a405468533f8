# What a build can be told. `cmake -LH` lists it.

include(CMakeDependentOption)

set(VQM_PLATFORM desktop CACHE STRING
    "What to build for: desktop, tv, or none (only VQM::core, to which a program brings log and settings)")
set(platforms desktop tv none)
set_property(CACHE VQM_PLATFORM PROPERTY STRINGS ${platforms})
if(NOT VQM_PLATFORM IN_LIST platforms)
    message(FATAL_ERROR "VQM_PLATFORM is '${VQM_PLATFORM}'; use desktop, tv or none.")
endif()

set(VQM_APP_ID org.quillmere.vqmkeygrab CACHE STRING "The application's id; the companion's is this with .gui behind it")
set(VQM_APPS_DIR /opt/usr/apps CACHE STRING
    "Where installed applications live; the schedule lies in <this>/<application id>/RECH")
set(VQM_MEDIA_DIR /opt/data/demo_movie CACHE STRING "Where the demo media lie")
set(VQM_CONSTANTS_FILE "" CACHE STRING
    "The constants file that vqmctl loads by default; empty: <VQM_APPS_DIR>/<application id>/res/constants.xml")

# A project that adds this one wants the library, and decides about the rest itself.
cmake_dependent_option(VQM_BUILD_APPLICATION
    "Build the application and all else that needs EFL, X11 and D-Bus" ${PROJECT_IS_TOP_LEVEL}
    "NOT VQM_PLATFORM STREQUAL none" OFF)
cmake_dependent_option(VQM_BUILD_TOOLS "Build vqmctl; needs CLI11 and nlohmann-json" ${PROJECT_IS_TOP_LEVEL}
    "NOT VQM_PLATFORM STREQUAL none" OFF)
cmake_dependent_option(VQM_BUILD_TESTS "Build the tests" ${PROJECT_IS_TOP_LEVEL}
    "VQM_PLATFORM STREQUAL desktop;VQM_BUILD_APPLICATION;VQM_BUILD_TOOLS" OFF)
cmake_dependent_option(VQM_BUILD_BENCHMARKS "Build the benchmarks" OFF
    "VQM_PLATFORM STREQUAL desktop;VQM_BUILD_APPLICATION;VQM_BUILD_TOOLS" OFF)
cmake_dependent_option(VQM_ECORE_WATCH
    "Deliver changes of settings on EFL's main loop; without it the library needs no EFL and refuses to watch" OFF
    "NOT VQM_BUILD_APPLICATION" ON)
option(VQM_INSTALL "Install the library too, not only programs" ${PROJECT_IS_TOP_LEVEL})
option(BUILD_SHARED_LIBS "Build libvqm as a shared library" OFF)

set(VQM_SANITIZE "" CACHE STRING "Sanitizers, for example address,undefined")

if(VQM_PLATFORM STREQUAL tv)
    set(VQM_TV_APP_DIR ${VQM_APPS_DIR}/${VQM_APP_ID} CACHE PATH "Where the application lies on the TV")
    if(CMAKE_INSTALL_PREFIX_INITIALIZED_TO_DEFAULT)
        set(CMAKE_INSTALL_PREFIX ${VQM_TV_APP_DIR} CACHE PATH "Where to install" FORCE)
    endif()
endif()
