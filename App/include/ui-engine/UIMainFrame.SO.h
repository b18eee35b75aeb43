// Interfaces `UIMainFrame` and `UIDocumentFrame`: the host's frames. Implemented by the host.
// Methods are called on the UI thread [ui-thread]; events are fired on any thread.
#pragma once

#include "ui-engine/SOEvent.h"

struct UIDocumentsCollection;

// A frame that shows documents, a child of the main frame.
struct UIDocumentFrame : ServiceObject {
    static constexpr const char* kName = "UIDocumentFrame";
    static constexpr const char* kHeader = "include/ui-engine/UIMainFrame.SO.h";

    // The frame's documents, owned; null when it has none.
    SO_METHOD(UIDocumentFrame, GetDocumentsCollection, 26, UIDocumentsCollection** collection);

    using Catalogue = SODetails::MethodCatalogue<GetDocumentsCollection>;
};

// The host's main frame, handed out by UIService::GetMainFrame.
struct UIMainFrame : ServiceObject {
    static constexpr const char* kName = "UIMainFrame";
    static constexpr const char* kHeader = "include/ui-engine/UIMainFrame.SO.h";

    // Fired when a child frame of the main frame was made; `frame` is borrowed for the call. The
    // panel follows the frame's collection of documents too.
    SO_EVENT(UIMainFrame, OnChildDocumentFrameCreated, 25, UIDocumentFrame* frame);

    using Catalogue = SODetails::MethodCatalogue<OnChildDocumentFrameCreated>;
};
