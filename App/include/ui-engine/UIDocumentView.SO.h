// Interfaces `UIDocumentView` and `UIDocumentViewSbS`: the user-interface side of a document view,
// and two of them side by side. Implemented by the host. [ui-thread]
#pragma once

#include "service-common/ServiceMethod.h"

struct BLDocumentView;

// The user-interface side of a document view.
struct UIDocumentView : ServiceObject {
    static constexpr const char* kName = "UIDocumentView";
    static constexpr const char* kHeader = "include/ui-engine/UIDocumentView.SO.h";

    // The business-logic view behind it, owned; the same object on every call. Null: the
    // panel shows no list for the view. [any-thread]
    SO_METHOD(UIDocumentView, GetDocumentView, 2, BLDocumentView** view);

    using Catalogue = SODetails::MethodCatalogue<GetDocumentView>;
};

// Two document views side by side. The panel keeps a weak reference and calls nothing.
struct UIDocumentViewSbS : ServiceObject {
    static constexpr const char* kName = "UIDocumentViewSbS";
    static constexpr const char* kHeader = "include/ui-engine/UIDocumentView.SO.h";

    // The two views, owned; null for an empty side.
    SO_METHOD(UIDocumentViewSbS, GetViews, 0, UIDocumentView** left, UIDocumentView** right);

    using Catalogue = SODetails::MethodCatalogue<GetViews>;
};
