// Interfaces `BLService` and `BLAnnotNavigator`: the host's business logic, listed by the service
// provider, and the object of it that prepares how an annotation is shown. Implemented by the host.
// [ui-thread]
#pragma once

#include "pdf-library/PDTypes.h"
#include "service-common/ServiceMethod.h"
#include "ui-engine/BLDocumentView.SO.h"

#include <cstdint>

struct BLDocument;

// What BuildHighlight works on. Everything is borrowed for the call.
struct BLHighlightArguments {
    BLDocument* document;         // the one that the view shows
    const BLGoToRequest* target;  // what the view was asked to show
    _PDAnnotRec* annotation;      // what is to be highlighted
    double pageScale;             // of the page, as the view reports it
    std::uint32_t pageRotation;   // degrees, as the view reports it
    std::uint32_t reserved;       // 0
};
static_assert(sizeof(BLHighlightArguments) == 40);

// Prepares how an annotation is shown in a view.
struct BLAnnotNavigator : ServiceObject {
    static constexpr const char* kName = "BLAnnotNavigator";
    static constexpr const char* kHeader = "include/ui-engine/BLService.SO.h";

    // An object that a view can show (BLDocumentView::ShowHighlight), owned. 0 with null when the
    // annotation has none: the panel's command then fails with 2, and does not focus the
    // annotation.
    SO_METHOD(BLAnnotNavigator, BuildHighlight, 0, const BLHighlightArguments* arguments,
              ServiceObject** highlight);

    using Catalogue = SODetails::MethodCatalogue<BuildHighlight>;
};

// The host's business logic, listed by the service provider as "BLService".
struct BLService : ServiceObject {
    static constexpr const char* kName = "BLService";
    static constexpr const char* kHeader = "include/ui-engine/BLService.SO.h";

    // The object that prepares highlights, owned.
    SO_METHOD(BLService, GetAnnotNavigator, 0, BLAnnotNavigator** navigator);

    using Catalogue = SODetails::MethodCatalogue<GetAnnotNavigator>;
};
