// Interface `UIDocumentsCollection`: the document views of one frame. Implemented by the host.
// Methods are called on the UI thread [ui-thread]; events are fired on any thread, and their
// arguments are borrowed for the call.
#pragma once

#include "ui-engine/SOEvent.h"
#include "ui-engine/UIDocumentView.SO.h"

struct UIDocumentsCollection : ServiceObject {
    static constexpr const char* kName = "UIDocumentsCollection";
    static constexpr const char* kHeader = "include/ui-engine/UIDocumentsCollection.SO.h";

    // Receives one view of the collection, borrowed for the call.
    using ViewCollector = void (*)(void* context, UIDocumentView* view);

    // The active view, owned; null when none is.
    SO_METHOD(UIDocumentsCollection, GetActiveView, 1, UIDocumentView** view);
    // Calls `collector` for every view, in the collection's order, before it returns.
    SO_METHOD(UIDocumentsCollection, EnumerateViews, 2, ViewCollector collector, void* context);
    // The active side-by-side view, owned; null when none is.
    SO_METHOD(UIDocumentsCollection, GetActiveSbSView, 22, UIDocumentViewSbS** view);

    // Fired when a view was opened: the panel makes its list, hidden at first.
    SO_EVENT(UIDocumentsCollection, OnDocumentViewCreated, 8, UIDocumentView* view);
    // Fired when a view became the active one: the panel shows its list and hides all others.
    SO_EVENT(UIDocumentsCollection, OnDocumentViewActivated, 11, UIDocumentView* view);
    // Fired when the active view ceased to be so: the panel hides its list.
    SO_EVENT(UIDocumentsCollection, OnDocumentViewDeactivated, 14, UIDocumentView* view);
    // Fired when a view was closed, while the object still lives: the panel removes its list.
    SO_EVENT(UIDocumentsCollection, OnDocumentViewDestroyed, 17, UIDocumentView* view);
    // Fired when a side-by-side view was opened. The panel does not act on it.
    SO_EVENT(UIDocumentsCollection, OnSbSViewCreated, 24, UIDocumentViewSbS* view);
    // Fired when a side-by-side view became the active one: the panel remembers it.
    SO_EVENT(UIDocumentsCollection, OnSbSViewActivated, 27, UIDocumentViewSbS* view);
    // Fired when the active side-by-side view ceased to be so: the panel forgets it.
    SO_EVENT(UIDocumentsCollection, OnSbSViewDeactivated, 30, UIDocumentViewSbS* view);
    // Fired when a side-by-side view was closed. The panel does not act on it.
    SO_EVENT(UIDocumentsCollection, OnSbSViewDestroyed, 33, UIDocumentViewSbS* view);

    using Catalogue = SODetails::MethodCatalogue<
        GetActiveView, EnumerateViews, GetActiveSbSView, OnDocumentViewCreated,
        OnDocumentViewActivated, OnDocumentViewDeactivated, OnDocumentViewDestroyed,
        OnSbSViewCreated, OnSbSViewActivated, OnSbSViewDeactivated, OnSbSViewDestroyed>;
};
