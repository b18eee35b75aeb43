// Pages of a document in order: what is known of each so far. Included by the documents only.
//
// [any-thread]: each call is one step for other threads, and waits for no page that is being read.
// Indices are valid unless a call says otherwise.
#pragma once

#include "documents/RecordRef.h"

#include <cstdint>
#include <mutex>
#include <optional>
#include <vector>

namespace Documents {

struct Page {
    PageRef snapshot{};            // empty: not read yet
    std::optional<_PDRect> box{};  // likewise
    std::uint64_t number = 0;      // identity of the page wherever it is moved to; set by the list
};

// An annotation and its position in a page's array.
struct PlacedAnnotation {
    std::uint32_t position;
    AnnotationRef annotation;
};

// The page's array with the annotations at the positions that they then have, and without those at
// their positions. Positions are in ascending order.
PageRef PageWith(const PageRef& page, const std::vector<PlacedAnnotation>& added);
PageRef PageWithout(const PageRef& page, const std::vector<PlacedAnnotation>& removed);

class PageList {
public:
    // Replaces all pages.
    void Assign(std::vector<Page> pages);
    std::uint32_t Count() const;

    // Empty when it has not been read, and beyond the count.
    PageRef Snapshot(std::uint32_t page) const;
    // `added`: what the page shows that its former snapshot, if it had one, did not.
    void SetSnapshot(std::uint32_t page, PageRef snapshot,
                     const std::vector<PlacedAnnotation>& added = {});
    std::optional<_PDRect> Box(std::uint32_t page) const;
    void SetBox(std::uint32_t page, const _PDRect& box);

    // Pages that show the annotation, among those that have been read.
    std::vector<std::uint32_t> Showing(const _PDAnnotRec* annotation) const;

    // Room for one page more: the next Insert does not fail.
    void Reserve();
    void Insert(std::uint32_t at, Page page);
    Page Take(std::uint32_t at);
    // The page's index is `to` afterwards.
    void Move(std::uint32_t from, std::uint32_t to);

private:
    void NumberAndNoteHomes(Page& page);

    mutable std::mutex mutex_;
    std::vector<Page> pages_;
    std::uint64_t lastNumber_ = 0;
};

}  // namespace Documents
