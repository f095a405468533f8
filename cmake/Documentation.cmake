# What is installed to be read, and the API reference.

if(NOT PROJECT_IS_TOP_LEVEL OR VQM_PLATFORM STREQUAL tv)
    return()
endif()

install(DIRECTORY ${PROJECT_SOURCE_DIR}/Docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation
    FILES_MATCHING PATTERN "*.md" PATTERN "*.json" PATTERN "*.cpp")
install(FILES ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/CHANGELOG.md ${PROJECT_SOURCE_DIR}/LICENSE
    DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)

# The API reference, made by Doxygen from the library's public headers: the target api-docs.
find_package(Doxygen QUIET)
if(NOT DOXYGEN_FOUND)
    add_custom_target(api-docs
        COMMAND ${CMAKE_COMMAND} -E echo "There is no Doxygen; install the package doxygen and configure again."
        COMMAND ${CMAKE_COMMAND} -E false VERBATIM)
    return()
endif()

set(DOXYGEN_PROJECT_NAME libvqm)
set(DOXYGEN_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/api-docs)
set(DOXYGEN_STRIP_FROM_PATH ${PROJECT_SOURCE_DIR})
set(DOXYGEN_STRIP_FROM_INC_PATH ${PROJECT_SOURCE_DIR})
set(DOXYGEN_WARN_AS_ERROR FAIL_ON_WARNINGS)
set(DOXYGEN_QUIET YES)
set(DOXYGEN_JAVADOC_AUTOBRIEF YES)
set(DOXYGEN_EXTRACT_ALL YES)
set(DOXYGEN_HTML_TIMESTAMP NO)
get_target_property(headers vqm HEADER_SET)
doxygen_add_docs(api-docs ${headers}
    ${PROJECT_SOURCE_DIR}/Platform/desktop/include/dlog.h ${PROJECT_SOURCE_DIR}/Platform/desktop/include/vconf.h
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR} COMMENT "Writing the API reference")
