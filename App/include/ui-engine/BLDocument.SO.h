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
    BLDocument* document;
    std::uint32_t pageIndex;  // 0-based
    std::uint32_t reserved;   // 0
    _PDAnnotRec* annotation;
};
static_assert(sizeof(BLAnnotCommandArguments) == 24);

struct BLDocument : ServiceObject {
    static constexpr const char* kName = "BLDocument";
    static constexpr const char* kHeader = "include/ui-engine/BLDocument.SO.h";

    SO_METHOD(BLDocument, GetPageCount, 0, std::int32_t* count);
    // The page at a 0-based index, with one reference that the caller owns (PDFunctionTable).
    // 9 beyond the page count.
    SO_METHOD(BLDocument, AcquirePage, 1, std::uint32_t index, _PDPageRec** page);
    // Runs the command of that name; the argument record belongs to the command. Fails with 8 for
    // an unknown command. [ui-thread]
    SO_METHOD(BLDocument, ExecuteCommand, 2, Atom command, const void* arguments);

    // `range` is borrowed for the call.
    SO_EVENT(BLDocument, OnPagesChanged, 39, PDPageOperation operation, const _PDPageRange* range);
    // `annotation` is borrowed for the call; page index 0-based.
    SO_EVENT(BLDocument, OnAnnotChanged, 78, PDAnnotOperation operation, unsigned int pageIndex,
             _PDAnnotRec* annotation);

    using Catalogue = SODetails::MethodCatalogue<GetPageCount, AcquirePage, ExecuteCommand,
                                                 OnPagesChanged, OnAnnotChanged>;
};
