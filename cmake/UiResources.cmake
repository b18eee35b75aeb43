# Embeds user-interface files into a library or program.
#
#   add_ui_resources(<target> ROOT <folder> FILES <path>...)
#
# Each path is relative to ROOT; in lower case it is the path under which the engine asks for
# the file, in upper case the name of its resource, of type "UI-DATA". One more resource, type
# and name "UI-DATA-TOC", lists the lower-case paths in alphabetical order.
#
# On Windows these are resources of the linked file, found with the system's own calls.
# Elsewhere the target receives a generated source that defines the table
# UiDataEmbeddedResources of platform/EmbeddedResources.h; the target must find that header.
#
# The files are embedded anew when one of them, the list or the generator changes.

set(UI_RESOURCES_GENERATOR ${CMAKE_CURRENT_LIST_DIR}/EmbedUiResources.cmake)

function(add_ui_resources target)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "ROOT" "FILES")
    if(NOT arg_ROOT OR NOT arg_FILES OR arg_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "add_ui_resources(<target> ROOT <folder> FILES <path>...)")
    endif()
    get_filename_component(root "${arg_ROOT}" ABSOLUTE)

    set(sources "")
    foreach(path IN LISTS arg_FILES)
        if(NOT EXISTS "${root}/${path}")
            message(FATAL_ERROR "add_ui_resources: there is no ${root}/${path}")
        endif()
        list(APPEND sources "${root}/${path}")
    endforeach()

    # The list is handed over in a file that changes only when the list does.
    set(folder ${CMAKE_CURRENT_BINARY_DIR}/${target}-ui-resources)
    list(JOIN arg_FILES "\n" lines)
    file(CONFIGURE OUTPUT ${folder}/files.txt CONTENT "${lines}\n" @ONLY)

    if(WIN32)
        enable_language(RC)
        set(generated ${folder}/UiResources.rc)
        set(products ${generated} ${folder}/UiResources.toc)
    else()
        set(generated ${folder}/UiResources.cpp)
        set(products ${generated})
    endif()

    add_custom_command(
        OUTPUT ${products}
        COMMAND ${CMAKE_COMMAND} "-DROOT=${root}" "-DLIST=${folder}/files.txt"
                "-DOUTPUT=${generated}" -P ${UI_RESOURCES_GENERATOR}
        DEPENDS ${sources} ${folder}/files.txt ${UI_RESOURCES_GENERATOR}
        COMMENT "Embedding the user-interface files of ${target}"
        VERBATIM)

    if(WIN32)
        # The resource compiler reads the files themselves, which its own scan does not see.
        set_source_files_properties(${generated} PROPERTIES OBJECT_DEPENDS
            "${sources};${folder}/UiResources.toc")
    endif()
    target_sources(${target} PRIVATE ${generated})
endfunction()
