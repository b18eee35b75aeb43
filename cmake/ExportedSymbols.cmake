# Limits what a library shows to its users.
#
#   export_only(<target> <symbol>...)
#
# The symbols have C linkage. Everything else stays inside, what the linked static libraries and
# the standard library's templates would export included.

function(export_only target)
    if(WIN32)
        list(JOIN ARGN "\n    " lines)
        set(file ${CMAKE_CURRENT_BINARY_DIR}/${target}.def)
        file(CONFIGURE OUTPUT ${file} CONTENT "EXPORTS\n    ${lines}\n" @ONLY)
        target_sources(${target} PRIVATE ${file})
        target_link_options(${target} PRIVATE -Wl,--exclude-all-symbols)
    else()
        list(JOIN ARGN "; " names)
        set(file ${CMAKE_CURRENT_BINARY_DIR}/${target}.map)
        file(CONFIGURE OUTPUT ${file} CONTENT "{ global: ${names}; local: *; };\n" @ONLY)
        target_link_options(${target} PRIVATE -Wl,--version-script=${file})
        set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${file})
    endif()
endfunction()
