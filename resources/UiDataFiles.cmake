# The files that the module carries, by the paths under which the engine asks for them.
# UI_DATA_ROOT is the folder that the paths start from.

set(UI_DATA_ROOT ${CMAKE_CURRENT_LIST_DIR})
file(GLOB UI_DATA_FILES CONFIGURE_DEPENDS RELATIVE ${UI_DATA_ROOT}
    ${UI_DATA_ROOT}/document-panel-comments/*.htm
    ${UI_DATA_ROOT}/document-panel-comments/*.css
    ${UI_DATA_ROOT}/document-panel-comments/*.png)
