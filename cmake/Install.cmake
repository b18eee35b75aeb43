# What a host's engineer gets, laid out by `cmake --install`:
#
#   bin/ (Windows) or lib/       the module, the platform libraries that it links to, and a gate for
#                                hosts of another compiler
#   lib/                         import libraries, and the SDK's static libraries
#   lib/cmake/CommentsPanel/     find_package(CommentsPanel)
#   lib/pkgconfig/               comments-panel.pc
#   include/comments-panel/      the SDK's headers
#   share/comments-panel/        the panel's resources, examples, texts of two languages
#   share/doc/comments-panel/    documentation

include(CMakePackageConfigHelpers)

set(package lib/cmake/CommentsPanel)
set(headers include/comments-panel)
set(documents share/doc/comments-panel)

# The headers alone, for hosts of another compiler; and with the static libraries behind them.
add_library(comments-panel-headers INTERFACE)
target_include_directories(comments-panel-headers INTERFACE $<INSTALL_INTERFACE:${headers}>)
target_compile_features(comments-panel-headers INTERFACE cxx_std_17)
set_target_properties(comments-panel-headers PROPERTIES EXPORT_NAME headers)
add_library(comments-panel-sdk INTERFACE)
target_link_libraries(comments-panel-sdk INTERFACE comments-panel-headers support)
set_target_properties(comments-panel-sdk PROPERTIES EXPORT_NAME sdk)

# The archives bear the package's name, not that of a folder.
set(archives support system-errors unicode-text)
foreach(archive IN LISTS archives)
    set_target_properties(${archive} PROPERTIES OUTPUT_NAME comments-panel-${archive})
endforeach()

set(libraries ui-document-panel-comments plugin-gate vx-atom vx-service-provider vx-encoding)
# From a map the notices of a release learn what was linked in.
option(COMMENTS_LINK_MAPS "Write a linker map of each library that is installed" OFF)
if(COMMENTS_LINK_MAPS)
    foreach(library IN LISTS libraries)
        target_link_options(${library} PRIVATE -Wl,-Map=${CMAKE_BINARY_DIR}/${library}.linkmap)
    endforeach()
endif()
install(TARGETS comments-panel-headers comments-panel-sdk ${archives} ${libraries}
    EXPORT CommentsPanel
    RUNTIME DESTINATION bin
    LIBRARY DESTINATION $<IF:$<BOOL:${WIN32}>,bin,lib>
    ARCHIVE DESTINATION lib)
install(EXPORT CommentsPanel NAMESPACE CommentsPanel:: FILE CommentsPanelTargets.cmake
    DESTINATION ${package})

if(WIN32)
    set(moduleFolder bin)
    set(systemLibraries "")
else()
    set(moduleFolder lib)
    set(systemLibraries "-ldl -pthread")
endif()
set(CommentsPanel_MODULE
    ${moduleFolder}/ui-document-panel-comments${CMAKE_SHARED_MODULE_SUFFIX})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/CommentsPanelConfig.cmake.in
    ${CMAKE_BINARY_DIR}/${package}/CommentsPanelConfig.cmake
    INSTALL_DESTINATION ${package}
    PATH_VARS CommentsPanel_MODULE
    NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/${package}/CommentsPanelConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(DIRECTORY ${CMAKE_BINARY_DIR}/${package}/ DESTINATION ${package})
configure_file(${CMAKE_CURRENT_LIST_DIR}/comments-panel.pc.in
    ${CMAKE_BINARY_DIR}/lib/pkgconfig/comments-panel.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/lib/pkgconfig/comments-panel.pc DESTINATION lib/pkgconfig)

install(DIRECTORY Support/include/ App/include/ DESTINATION ${headers} FILES_MATCHING PATTERN *.h)
install(FILES
    workbench/platform-libraries/AtomLibraryHost.h
    workbench/platform-libraries/ServiceProviderHost.h
    DESTINATION ${headers}/platform-libraries)
install(DIRECTORY resources/document-panel-comments DESTINATION share/comments-panel/resources)
install(DIRECTORY examples DESTINATION share/comments-panel PATTERN .clang-format EXCLUDE)
install(FILES workbench/locales/en.json workbench/locales/de.json
    DESTINATION share/comments-panel/locales)
install(FILES docs/integration-guide.md docs/interface.md docs/decisions.md docs/release-archive.md
    CHANGELOG.md
    DESTINATION ${documents})
