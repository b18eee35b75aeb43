// Interface `BLDocument`: an open document. Implemented by the host. Methods may be called on any
// thread; events are fired on any thread. [any-thread]
#pragma once

#include "pdf-library/PDTypes.h"
#include "service-common/Atom.h"
#include "ui-engine/SOEvent.h"

#include <cstdint>

struct BLDocument;

// Argument record of the document command "Annot_Delete". Everything is borrowed for the call.
struct BLAnnotCommandArguments {
    BLDocument* document;     // the one whose command it is
    std::uint32_t pageIndex;  // 0-based
    std::uint32_t reserved;   // 0
    _PDAnnotRec* annotation;  // the one to be deleted
};
static_assert(sizeof(BLAnnotCommandArguments) == 24);

struct BLDocument : ServiceObject {
    static constexpr const char* kName = "BLDocument";
    static constexpr const char* kHeader = "include/ui-engine/BLDocument.SO.h";

    // Number of pages; 0 or less: none.
    SO_METHOD(BLDocument, GetPageCount, 0, std::int32_t* count);
    // The page at a 0-based index as it stands, with one reference that the caller owns
    // (PDFunctionTable). 0 with null for a page that cannot be delivered, which is left out of the
    // list; fails with 9 beyond the page count.
    SO_METHOD(BLDocument, AcquirePage, 1, std::uint32_t index, _PDPageRec** page);
    // Runs the command of that name; `arguments` is the command's record, borrowed for the call.
    // The panel runs "Annot_Delete" (BLAnnotCommandArguments); the deletion is told by
    // OnAnnotChanged. Fails with 8 for an unknown command, and with a code of the host's for one
    // that is refused. [ui-thread]
    SO_METHOD(BLDocument, ExecuteCommand, 2, Atom command, const void* arguments);

    // Fired after pages were inserted, deleted, moved, rotated or cropped. `range` is borrowed for
    // the call.
    SO_EVENT(BLDocument, OnPagesChanged, 39, PDPageOperation operation, const _PDPageRange* range);
    // Fired after an annotation of a page was added, removed or changed; the page index is 0-based,
    // `annotation` is borrowed for the call.
    SO_EVENT(BLDocument, OnAnnotChanged, 78, PDAnnotOperation operation, unsigned int pageIndex,
             _PDAnnotRec* annotation);

    using Catalogue = SODetails::MethodCatalogue<GetPageCount, AcquirePage, ExecuteCommand,
                                                 OnPagesChanged, OnAnnotChanged>;
};
