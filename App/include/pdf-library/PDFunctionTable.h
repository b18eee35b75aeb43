// The function table of the PDF library: everything that the panel asks about pages and
// annotations. The host's "PDModelService" hands it out (see PDModelService.SO.h); it stays valid
// and unchanged for the life of the process.
//
// Every entry may be called on any thread, several at once, on the same document too: the library
// locks inside. [any-thread] Entries return 0 or a code of the library; out values are cleared
// first, and left cleared on failure. Records handed out carry one reference that the caller owns.
#pragma once

#include "pdf-library/PDTypes.h"
#include "service-common/Atom.h"
#include "service-common/ResultCodes.h"

#include <cstddef>
#include <cstdint>

// Receives a text of the library: `length` UTF-16 code units at `text`, borrowed for the call.
// Called at most once per query, and not at all when the query fails; must not call the library
// and must not throw.
using PDTextSink = void (*)(void* context, const char16_t* text, std::uint32_t length);

// Bytes of version 1 of the table: a host's table of fewer is refused (code 2, "Not initialized").
// Entries behind them were added later and may be absent.
inline constexpr std::uint32_t kPDFunctionTableMinimum = 128;

// The table. A method is an entry of it, of which all that is said above holds.
struct PDFunctionTable {
    std::uint32_t size;     // bytes of the table: entries beyond it do not exist
    std::uint32_t version;  // 1

    // Reference counts. A null record is ignored. Records stay valid, if detached, after their
    // page or document changed or was closed.
    void (*PageAddRef)(_PDPageRec* page);
    void (*PageRelease)(_PDPageRec* page);
    void (*AnnotAddRef)(_PDAnnotRec* annotation);
    void (*AnnotRelease)(_PDAnnotRec* annotation);

    // Number of entries of the page's annotation array, entries that are no annotation included.
    // A page record shows the array as it stood when the page was acquired.
    ResultCode (*PageGetAnnotCount)(_PDPageRec* page, std::uint32_t* count);

    // The annotation at a 0-based position. 0 with a null record when the entry at that position
    // is no annotation (null, not a dictionary); 9 beyond the count.
    ResultCode (*PageGetAnnot)(_PDPageRec* page, std::uint32_t position, _PDAnnotRec** annotation);

    // Whether two records stand for the same annotation object of the same document.
    ResultCode (*AnnotIsEqual)(_PDAnnotRec* left, _PDAnnotRec* right, bool* equal);

    // Whether the page's list of comments shows the annotation. The answer is the same for as
    // long as the annotation is unchanged, also after it was removed from its page.
    ResultCode (*AnnotIsListed)(_PDAnnotRec* annotation, bool* listed);

    // Name of the annotation's subtype as an atom ("Highlight"); kAtomNone when it has none.
    ResultCode (*AnnotGetSubtype)(_PDAnnotRec* annotation, Atom* subtype);

    // Texts, empty when absent: contents (/Contents), title (/T), subject (/Subj). NULs, language
    // escapes and control characters but tab, CR and LF have been removed.
    ResultCode (*AnnotGetContents)(_PDAnnotRec* annotation, PDTextSink sink, void* context);
    ResultCode (*AnnotGetTitle)(_PDAnnotRec* annotation, PDTextSink sink, void* context);
    ResultCode (*AnnotGetSubject)(_PDAnnotRec* annotation, PDTextSink sink, void* context);

    // Dates (/CreationDate, /M); year 0 when absent or not readable.
    ResultCode (*AnnotGetCreationDate)(_PDAnnotRec* annotation, _PDDateRec* date);
    ResultCode (*AnnotGetModificationDate)(_PDAnnotRec* annotation, _PDDateRec* date);

    // The annotation's rectangle (/Rect); 8 when it has none that can be read.
    ResultCode (*AnnotGetRect)(_PDAnnotRec* annotation, _PDRect* rect);
};
static_assert(offsetof(PDFunctionTable, PageAddRef) == 8);
static_assert(sizeof(PDFunctionTable) == 128);
