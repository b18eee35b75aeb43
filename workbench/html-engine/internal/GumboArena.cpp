#include <html-engine/internal/GumboArena.h>

#include <algorithm>
#include <new>

namespace HtmlEngine::Internal {

namespace {

/// The clock is read once in this many allocations.
constexpr std::size_t kCallsPerClockReading = 4096;

}  // namespace

GumboArena::GumboArena(Limits limits) : limits_(limits) {}

GumboArena::~GumboArena() = default;

void* GumboArena::Allocate(void* arena, std::size_t size)
{
    auto& self = *static_cast<GumboArena*>(arena);
    // The parser takes any result for memory, and no exception may pass through it.
    void* block = nullptr;
    try {
        block = self.Take(size);
    } catch (const std::bad_alloc&) {
        block = nullptr;
    }
    if (block == nullptr) {
        std::longjmp(self.limitReached_, 1);
    }
    return block;
}

bool GumboArena::CheckTime()
{
    if (++calls_ % kCallsPerClockReading == 0) {
        ranOutOfTime_ = std::chrono::steady_clock::now() - start_ > limits_.time;
    }
    return !ranOutOfTime_;
}

void* GumboArena::Take(std::size_t size)
{
    const std::size_t sizeClass =
        std::max<std::size_t>((size + kGranularity - 1) / kGranularity, 1);
    if (!CheckTime()) {
        return nullptr;
    }
    if (sizeClass < kSizeClasses && recycled_[sizeClass] != nullptr) {
        FreeBlock* const block = recycled_[sizeClass];
        recycled_[sizeClass] = block->next;
        return block;
    }
    const std::size_t whole = sizeof(Header) + sizeClass * kGranularity;
    used_ += whole;
    if (used_ > limits_.bytes) {
        return nullptr;
    }
    if (sizeClass >= kSizeClasses) {
        std::byte* const place = chunks_.emplace_back(std::make_unique<std::byte[]>(whole)).get();
        return ::new (static_cast<void*>(place)) Header{sizeClass} + 1;
    }
    if (freeSize_ < whole) {
        free_ = chunks_.emplace_back(std::make_unique<std::byte[]>(kChunkSize)).get();
        freeSize_ = kChunkSize;
    }
    std::byte* const place = free_;
    free_ += whole;
    freeSize_ -= whole;
    return ::new (static_cast<void*>(place)) Header{sizeClass} + 1;
}

void GumboArena::Deallocate(void* arena, void* block)
{
    if (block == nullptr) {
        return;
    }
    auto& self = *static_cast<GumboArena*>(arena);
    const std::size_t sizeClass = (static_cast<Header*>(block) - 1)->sizeClass;
    if (sizeClass < kSizeClasses) {
        self.recycled_[sizeClass] = ::new (block) FreeBlock{self.recycled_[sizeClass]};
    }
}

}  // namespace HtmlEngine::Internal
