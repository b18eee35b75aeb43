// The records behind the PDF library's opaque types. Included by the documents only.
//
// Nothing here refers to a document, so records outlive theirs. Whatever a table entry reads is
// either immutable or swapped as a whole: reference counts, positions and equality take no lock,
// and a property read holds a bit of its own record for the few instructions that a reference
// count takes.
#pragma once

#include "documents/AnnotationProperties.h"
#include "documents/RecordRef.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

namespace Documents {

// Whether a page lists an annotation of this subtype and these flags.
bool IsListedByDefault(std::string_view subtype, std::uint32_t flags) noexcept;

// Everything that can be asked of an annotation, never changed once it is made.
class PropertyBlock {
public:
    PropertyBlock(AnnotationProperties values, bool listAll);

    const AnnotationProperties properties;
    const Atom subtype;
    const bool listAll;
    const bool listed;

    void AddRef() const noexcept { references_.fetch_add(1, std::memory_order_relaxed); }
    void Release() const noexcept
    {
        if (references_.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            delete this;
        }
    }

private:
    ~PropertyBlock() = default;

    mutable std::atomic<std::uint32_t> references_{1};
};

struct PropertyBlockRelease {
    void operator()(const PropertyBlock* block) const noexcept { block->Release(); }
};
using PropertyBlockRef = std::unique_ptr<const PropertyBlock, PropertyBlockRelease>;

PropertyBlockRef MakePropertyBlock(AnnotationProperties properties, bool listAll);

// Holds one block that readers take references to while a writer replaces it. The lowest bit of the
// word is set while a thread is between reading the pointer and having counted its reference.
class PropertySlot {
public:
    explicit PropertySlot(PropertyBlockRef block) noexcept;
    ~PropertySlot();
    PropertySlot(const PropertySlot&) = delete;
    PropertySlot& operator=(const PropertySlot&) = delete;

    PropertyBlockRef Load() const noexcept;
    // What `read` makes of the block, while a writer waits: for what takes no longer than a copy.
    template <class Read>
    auto Peek(Read read) const noexcept
    {
        const std::uintptr_t word = Lock();
        const auto result = read(*reinterpret_cast<const PropertyBlock*>(word));
        word_.store(word, std::memory_order_release);
        return result;
    }
    void Store(PropertyBlockRef block) noexcept;

private:
    std::uintptr_t Lock() const noexcept;

    mutable std::atomic<std::uintptr_t> word_;
};

}  // namespace Documents

struct _PDAnnotRec {
    explicit _PDAnnotRec(Documents::PropertyBlockRef block) noexcept;
    ~_PDAnnotRec();
    _PDAnnotRec(const _PDAnnotRec&) = delete;
    _PDAnnotRec& operator=(const _PDAnnotRec&) = delete;

    std::atomic<std::uint32_t> references{1};
    Documents::PropertySlot properties;

    // The page that first showed the annotation, by the document's number for it (0: none yet), and
    // whether another page shows it too: most do not, and are found without a search. Guarded by
    // the document's page lock.
    std::uint64_t homePage = 0;
    bool onSeveralPages = false;

    // The pop-up that belongs to the annotation. Guarded by the document's edit lock. Set only on
    // an annotation that is no pop-up itself, to one that is, so that no ring can arise.
    Documents::AnnotationRef popup;
};

struct _PDPageRec {
    explicit _PDPageRec(std::vector<Documents::AnnotationRef> entries) noexcept;
    ~_PDPageRec();
    _PDPageRec(const _PDPageRec&) = delete;
    _PDPageRec& operator=(const _PDPageRec&) = delete;

    std::atomic<std::uint32_t> references{1};
    const std::vector<Documents::AnnotationRef> annotations;  // empty: no annotation there
};

namespace Documents {

AnnotationRef MakeAnnotationRecord(AnnotationProperties properties, bool listAll);
PageRef MakePageRecord(std::vector<AnnotationRef> annotations);

// Makes `popup` the pop-up of `annotation` when their subtypes allow it and it has none yet.
void LinkPopup(_PDAnnotRec& annotation, const AnnotationRef& popup);

}  // namespace Documents
