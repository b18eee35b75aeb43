// The listed annotations of one page in order, with the unique names that their items have. The
// page's annotations are held while it is walked, so that each is asked of the library once.
// [any-thread]
#pragma once

#include "pdf-library/PDFL.h"
#include "ui-engine/BLDocument.SO.h"

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

// "%1%_%2%" of page index and position, in plain digits.
void WriteUniqueName(std::uint32_t pageIndex, std::uint32_t position, std::wstring& name);

// A page of a document; empty, which counts as a failed query, when the document hands out none.
// Fails as the document does.
PDFL::Page AcquirePage(BLDocument* document, std::uint32_t pageIndex);

class PageListing {
public:
    // `page` is borrowed; an empty one lists nothing.
    PageListing(const PDFL::Page& page, std::uint32_t pageIndex)
        : page_(page), pageIndex_(pageIndex), count_(page.AnnotationCount())
    {
        annotations_.reserve(count_);
    }

    // Goes on to the next listed annotation and writes its name; false when there is none. Of equal
    // annotations all have the position of the first.
    bool Next(std::wstring& name);

    // The one that Next found last.
    const PDFL::Annotation& Annotation() const { return annotations_.back(); }

private:
    std::uint32_t FirstPosition();
    // Indexes the annotations up to `last`; false when the library does not tell what that takes.
    bool IndexUpTo(std::uint32_t last);

    const PDFL::Page& page_;
    const std::uint32_t pageIndex_;
    const std::uint32_t count_;
    std::vector<PDFL::Annotation> annotations_;  // those before the next position
    // Of a crowded page: positions by what equal annotations have in common, all before indexed_.
    std::unordered_multimap<std::uint64_t, std::uint32_t> positions_;
    std::uint32_t indexed_ = 0;
    std::uint64_t lastKey_ = 0;  // of the annotation that was indexed last
    bool comparesAll_ = false;   // the library did not tell of one
};
