# libvqm, as other projects get it.
#
#   VQM::core   the library alone; the program that links it brings log and settings (libvqm-core.a)
#   VQM::vqm    the same with the desktop's log and settings (libvqm.a, or libvqm.so with BUILD_SHARED_LIBS)
#
# Our own programs link the parts of which these are made.

if(VQM_PLATFORM STREQUAL tv)
    return() # a TV gets programs
endif()

set_target_properties(vqm PROPERTIES OUTPUT_NAME vqm-core EXPORT_NAME core)
add_library(VQM::core ALIAS vqm)
set(parts vqm)
set(libraries vqm)

if(VQM_PLATFORM STREQUAL desktop)
    list(APPEND parts vqm_platform_base vqm_platform_files vqm_platform_text)
    list(APPEND libraries vqm_library)
    add_library(vqm_library)
    target_sources(vqm_library PRIVATE
        $<TARGET_OBJECTS:vqm> $<TARGET_OBJECTS:vqm_platform_base> $<TARGET_OBJECTS:vqm_platform_files>
        $<TARGET_OBJECTS:vqm_platform_text>)
    add_library(VQM::vqm ALIAS vqm_library)
    set_target_properties(vqm_library PROPERTIES
        OUTPUT_NAME vqm
        EXPORT_NAME vqm
        LINKER_LANGUAGE CXX
        VERSION ${PROJECT_VERSION}
        SOVERSION ${VQM_SOVERSION})
    target_compile_features(vqm_library PUBLIC cxx_std_17)
    target_compile_definitions(vqm_library INTERFACE
        $<BUILD_INTERFACE:$<TARGET_PROPERTY:vqm,INTERFACE_COMPILE_DEFINITIONS>>)
    target_link_libraries(vqm_library
        PUBLIC vqm_platform_headers Boost::thread Boost::filesystem Boost::system Threads::Threads
        PRIVATE EXPAT::EXPAT PkgConfig::VQM_GLIB)
    if(VQM_ECORE_WATCH)
        target_link_libraries(vqm_library PRIVATE PkgConfig::VQM_ECORE)
    endif()
    if(BUILD_SHARED_LIBS)
        include(ExportedNames)
        vqm_export_names(vqm_library ${CMAKE_CURRENT_LIST_DIR}/exported-names.txt)
    endif()
endif()

# Usable in a shared object, without the detours that calls between its functions would take there.
foreach(part IN LISTS parts)
    set_target_properties(${part} PROPERTIES POSITION_INDEPENDENT_CODE ON)
    target_compile_options(${part} PRIVATE -fno-semantic-interposition)
endforeach()

if(NOT VQM_INSTALL)
    return()
endif()

include(CMakePackageConfigHelpers)
set(package ${CMAKE_INSTALL_LIBDIR}/cmake/VQM)

install(TARGETS ${libraries} vqm_platform_headers EXPORT VQMTargets
    ARCHIVE COMPONENT development
    LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vqm COMPONENT development)
install(FILES ${PROJECT_SOURCE_DIR}/Platform/desktop/include/dlog.h ${PROJECT_SOURCE_DIR}/Platform/desktop/include/vconf.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vqm/platform COMPONENT development)
install(EXPORT VQMTargets NAMESPACE VQM:: DESTINATION ${package} COMPONENT development)

if(NOT VQM_CONSTANTS_FILE)
    set(VQM_CONSTANTS_FILE ${VQM_APPS_DIR}/${VQM_APP_ID}/res/constants.xml)
endif()
configure_file(cmake/VQMInstalledConfig.h.in ${PROJECT_BINARY_DIR}/install/VQMInstalledConfig.h @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/install/VQMInstalledConfig.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vqm/Common COMPONENT development)

# A shared library has found its own modules.
set(package_modules)
if(TARGET vqm_library AND NOT BUILD_SHARED_LIBS)
    set(package_modules "vqm_find_module(VQM_GLIB glib-2.0)\n")
    if(VQM_ECORE_WATCH)
        string(APPEND package_modules "vqm_find_module(VQM_ECORE ecore eina)\n")
    endif()
endif()
configure_package_config_file(cmake/VQMConfig.cmake.in ${PROJECT_BINARY_DIR}/install/VQMConfig.cmake
    INSTALL_DESTINATION ${package})
# Before 1.0 a minor version may change what is there.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/install/VQMConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/install/VQMConfig.cmake ${PROJECT_BINARY_DIR}/install/VQMConfigVersion.cmake
    DESTINATION ${package} COMPONENT development)

if(TARGET vqm_library)
    # What a shared library needs, only its static sibling's user must link.
    set(private)
    if(BUILD_SHARED_LIBS)
        set(private .private)
    endif()
    set(modules "expat glib-2.0")
    if(VQM_ECORE_WATCH)
        string(APPEND modules " ecore")
    endif()
    if(BUILD_SHARED_LIBS)
        # pkg-config wants private modules to be installed even for a shared library, which needs none of
        # their headers.
        set(modules)
    endif()
    file(RELATIVE_PATH prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
    configure_file(cmake/vqm.pc.in ${PROJECT_BINARY_DIR}/install/vqm.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/install/vqm.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endif()
