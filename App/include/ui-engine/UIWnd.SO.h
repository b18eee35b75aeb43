// Interface `UIWnd`: a window of the host, whose content an HTML engine draws. Finds elements by
// CSS selector and gives the service objects of its scope. The panel keeps a weak reference to it.
// Implemented by the host. [ui-thread]
#pragma once

#include "service-common/Atom.h"
#include "service-common/ServiceMethod.h"
#include "ui-engine/HtmlElementTypes.h"

struct UIWnd : ServiceObject {
    static constexpr const char* kName = "UIWnd";
    static constexpr const char* kHeader = "include/ui-engine/UIWnd.SO.h";

    // Receives one matching element; `handle` is borrowed for the call.
    using Collector = void (*)(void* context, HtmlElementHandle handle, UIHtmlEngine* engine);

    // The service object of that name in the window's scope ("UIDocumentsCollection",
    // "UIMainFrame"), owned. Fails with 8 when there is none.
    SO_METHOD(UIWnd, QueryServiceObject, 4, Atom name, ServiceObject** object);
    // Calls `collector` for every element below `root` that matches `selector` (CSS, narrow code
    // page, zero-terminated), in document order, before it returns. `:root` means `root`. The
    // collector takes uses of elements and throws nothing. Fails with 6 for a malformed selector.
    SO_METHOD(UIWnd, SelectElements, 32, HtmlElementHandle root, const char* selector,
              Collector collector, void* context);

    using Catalogue = SODetails::MethodCatalogue<QueryServiceObject, SelectElements>;
};
static_assert(UIWnd::Catalogue::kMethodCount * kMethodEntrySize < kImplausibleMethodTableSize);
