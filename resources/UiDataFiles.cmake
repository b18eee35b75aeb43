# The files that the module carries, by the paths under which the engine asks for them.
# UI_DATA_ROOT is the folder that the paths start from.

set(UI_DATA_ROOT ${CMAKE_CURRENT_LIST_DIR})

set(UI_DATA_FILES
    document-panel-comments/panel.htm
    document-panel-comments/panel.css
    document-panel-comments/button.css

    document-panel-comments/template-comments-container.htm
    document-panel-comments/template-page-item.htm
    document-panel-comments/template-annot-item.htm
    document-panel-comments/template-simple-annot-item.htm
    document-panel-comments/template-annot-tooltip.htm

    document-panel-comments/arrow-open.png
    document-panel-comments/arrow-open-hover.png
    document-panel-comments/arrow-close.png
    document-panel-comments/arrow-close-hover.png
    document-panel-comments/document-ico.png
    document-panel-comments/expand-collapse.png
    document-panel-comments/comments-previous.png
    document-panel-comments/comments-next.png
    document-panel-comments/comments-list.png

    document-panel-comments/text-ico.png
    document-panel-comments/stamp-ico.png
    document-panel-comments/pencil-ico.png
    document-panel-comments/rectangle-ico.png
    document-panel-comments/oval-ico.png
    document-panel-comments/highlight-ico.png
    document-panel-comments/underline-ico.png
    document-panel-comments/strikethrough-ico.png
    document-panel-comments/redaction-ico.png
)
