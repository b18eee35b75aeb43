// Interface `UIDocumentsCollection`: the document views of one frame. Implemented by the host.
// Events are fired on any thread; their arguments are borrowed for the call.
#pragma once

#include "ui-engine/SOEvent.h"
#include "ui-engine/UIDocumentView.SO.h"

struct UIDocumentsCollection : ServiceObject {
    static constexpr const char* kName = "UIDocumentsCollection";
    static constexpr const char* kHeader = "include/ui-engine/UIDocumentsCollection.SO.h";

    // Receives one view of the collection, borrowed for the call.
    using ViewCollector = void (*)(void* context, UIDocumentView* view);

    // The active view, owned; null when none is. [ui-thread]
    SO_METHOD(UIDocumentsCollection, GetActiveView, 1, UIDocumentView** view);
    // Calls `collector` for every view, in the collection's order. [ui-thread]
    SO_METHOD(UIDocumentsCollection, EnumerateViews, 2, ViewCollector collector, void* context);
    // The active side-by-side view, owned; null when none is. [ui-thread]
    SO_METHOD(UIDocumentsCollection, GetActiveSbSView, 22, UIDocumentViewSbS** view);

    SO_EVENT(UIDocumentsCollection, OnDocumentViewCreated, 8, UIDocumentView* view);
    SO_EVENT(UIDocumentsCollection, OnDocumentViewActivated, 11, UIDocumentView* view);
    SO_EVENT(UIDocumentsCollection, OnDocumentViewDeactivated, 14, UIDocumentView* view);
    SO_EVENT(UIDocumentsCollection, OnDocumentViewDestroyed, 17, UIDocumentView* view);
    SO_EVENT(UIDocumentsCollection, OnSbSViewCreated, 24, UIDocumentViewSbS* view);
    SO_EVENT(UIDocumentsCollection, OnSbSViewActivated, 27, UIDocumentViewSbS* view);
    SO_EVENT(UIDocumentsCollection, OnSbSViewDeactivated, 30, UIDocumentViewSbS* view);
    SO_EVENT(UIDocumentsCollection, OnSbSViewDestroyed, 33, UIDocumentViewSbS* view);

    using Catalogue = SODetails::MethodCatalogue<
        GetActiveView, EnumerateViews, GetActiveSbSView, OnDocumentViewCreated,
        OnDocumentViewActivated, OnDocumentViewDeactivated, OnDocumentViewDestroyed,
        OnSbSViewCreated, OnSbSViewActivated, OnSbSViewDeactivated, OnSbSViewDestroyed>;
};
