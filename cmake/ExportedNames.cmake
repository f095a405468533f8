# What a shared library exports: the names in a list, and nothing else.
#
# By the linker and not by attributes in the headers: the platform's interfaces are declared as they are
# published, and a class's private operations stay private.

# vqm_export_names(TARGET FILE): a name a line. "Class::operation" stands for every overload of it and
# brings along what the compiler makes of the class.
function(vqm_export_names target list)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${list})
    file(STRINGS ${list} names REGEX "^[^#]")
    set(plain)
    set(patterns)
    set(classes)
    foreach(name IN LISTS names)
        if(name MATCHES "^(.+)::[^:]+$")
            list(APPEND classes ${CMAKE_MATCH_1})
            # A pattern cannot hold "(", "~" or "=". That it fits nothing else, the test of the names says.
            string(REGEX REPLACE "[^A-Za-z0-9_:]" "?" pattern ${name})
            string(APPEND patterns "    ${pattern}?*;\n")
        else()
            string(APPEND plain "  ${name};\n")
        endif()
    endforeach()
    list(REMOVE_DUPLICATES classes)
    foreach(class IN LISTS classes)
        foreach(part "vtable" "typeinfo" "typeinfo name")
            string(APPEND patterns "    \"${part} for ${class}\";\n")
        endforeach()
    endforeach()
    set(script ${CMAKE_CURRENT_BINARY_DIR}/${target}.map)
    file(CONFIGURE OUTPUT ${script} @ONLY CONTENT
"VQM_@VQM_SOVERSION@ {
global:
@plain@  extern \"C++\" {
@patterns@  };
local:
  *;
};
")
    target_link_options(${target} PRIVATE LINKER:--version-script=${script} LINKER:--as-needed)
    if(NOT VQM_SANITIZE)
        target_link_options(${target} PRIVATE LINKER:-z,defs)
    endif()
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${script})
endfunction()
