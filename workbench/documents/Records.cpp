#include "documents/Records.h"

#include "documents/AnnotationSyntax.h"
#include "documents/FaultInjection.h"

#include <algorithm>
#include <string_view>
#include <thread>

namespace {

std::atomic<std::int64_t> livePages{0};
std::atomic<std::int64_t> liveAnnotations{0};

Atom AtomOf(const std::string& name)
{
    Atom atom = kAtomNone;
    if (name.empty() || VxGetAtomFromString(name.c_str(), &atom) != kResultOk) {
        return kAtomNone;
    }
    return atom;
}

}  // namespace

namespace Documents {

// Hidden and NoView both keep an annotation off the screen and from answering its user
// (ISO 32000-1, 12.5.3), so neither has a place in a list that leads to what the screen shows.
// Invisible concerns annotations of unknown subtypes only.
bool IsListedByDefault(std::string_view subtype, std::uint32_t flags) noexcept
{
    return (flags & (kFlagHidden | kFlagNoView)) == 0 && IsMarkupSubtype(subtype);
}

PropertyBlock::PropertyBlock(AnnotationProperties values, bool listEverything)
    : properties{std::move(values)},
      subtype{AtomOf(properties.subtype)},
      listAll{listEverything},
      listed{listEverything || IsListedByDefault(properties.subtype, properties.flags)}
{
}

PropertyBlockRef MakePropertyBlock(AnnotationProperties properties, bool listAll)
{
    return PropertyBlockRef{new PropertyBlock{std::move(properties), listAll}};
}

PropertySlot::PropertySlot(PropertyBlockRef block) noexcept
    : word_{reinterpret_cast<std::uintptr_t>(block.release())}
{
    static_assert(alignof(PropertyBlock) >= 2, "the lowest bit of a block's address is the lock");
}

PropertySlot::~PropertySlot()
{
    reinterpret_cast<const PropertyBlock*>(word_.load(std::memory_order_acquire))->Release();
}

std::uintptr_t PropertySlot::Lock() const noexcept
{
    for (std::uint32_t attempt = 1;; ++attempt) {
        std::uintptr_t word = word_.load(std::memory_order_relaxed) & ~std::uintptr_t{1};
        if (word_.compare_exchange_weak(word, word | 1, std::memory_order_acquire,
                                        std::memory_order_relaxed)) {
            return word;
        }
        if (attempt % 64 == 0) {
            std::this_thread::yield();  // the holder of the bit may have been preempted
        }
    }
}

PropertyBlockRef PropertySlot::Load() const noexcept
{
    const std::uintptr_t word = Lock();
    const auto* block = reinterpret_cast<const PropertyBlock*>(word);
    block->AddRef();
    word_.store(word, std::memory_order_release);
    return PropertyBlockRef{block};
}

void PropertySlot::Store(PropertyBlockRef block) noexcept
{
    const std::uintptr_t former = Lock();
    word_.store(reinterpret_cast<std::uintptr_t>(block.release()), std::memory_order_release);
    reinterpret_cast<const PropertyBlock*>(former)->Release();
}

AnnotationRef MakeAnnotationRecord(AnnotationProperties properties, bool listAll)
{
    auto block = MakePropertyBlock(std::move(properties), listAll);
    return AnnotationRef::Adopt(std::make_unique<_PDAnnotRec>(std::move(block)).release());
}

PageRef MakePageRecord(std::vector<AnnotationRef> annotations)
{
    return PageRef::Adopt(std::make_unique<_PDPageRec>(std::move(annotations)).release());
}

void LinkPopup(_PDAnnotRec& annotation, const AnnotationRef& popup)
{
    if (annotation.popup || !popup || annotation.properties.Load()->properties.subtype == "Popup" ||
        popup.Get()->properties.Load()->properties.subtype != "Popup") {
        return;
    }
    annotation.popup = popup;
}

LiveRecords CountLiveRecords() noexcept
{
    return {livePages.load(), liveAnnotations.load()};
}

}  // namespace Documents

_PDAnnotRec::_PDAnnotRec(Documents::PropertyBlockRef block) noexcept : properties{std::move(block)}
{
    liveAnnotations.fetch_add(1, std::memory_order_relaxed);
}

_PDAnnotRec::~_PDAnnotRec()
{
    liveAnnotations.fetch_sub(1, std::memory_order_relaxed);
}

_PDPageRec::_PDPageRec(std::vector<Documents::AnnotationRef> entries) noexcept
    : annotations{std::move(entries)}
{
    livePages.fetch_add(1, std::memory_order_relaxed);
}

_PDPageRec::~_PDPageRec()
{
    livePages.fetch_sub(1, std::memory_order_relaxed);
}
