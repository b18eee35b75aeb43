// Interfaces `UIMainFrame` and `UIDocumentFrame`: the host's frames. Implemented by the host.
// Events are fired on any thread.
#pragma once

#include "ui-engine/SOEvent.h"

struct UIDocumentsCollection;

// A frame that shows documents.
struct UIDocumentFrame : ServiceObject {
    static constexpr const char* kName = "UIDocumentFrame";
    static constexpr const char* kHeader = "include/ui-engine/UIMainFrame.SO.h";

    // The frame's documents, owned. [ui-thread]
    SO_METHOD(UIDocumentFrame, GetDocumentsCollection, 26, UIDocumentsCollection** collection);

    using Catalogue = SODetails::MethodCatalogue<GetDocumentsCollection>;
};

struct UIMainFrame : ServiceObject {
    static constexpr const char* kName = "UIMainFrame";
    static constexpr const char* kHeader = "include/ui-engine/UIMainFrame.SO.h";

    // A child frame of the main frame was made; `frame` is borrowed for the call.
    SO_EVENT(UIMainFrame, OnChildDocumentFrameCreated, 25, UIDocumentFrame* frame);

    using Catalogue = SODetails::MethodCatalogue<OnChildDocumentFrameCreated>;
};
