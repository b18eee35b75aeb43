#pragma once

// Memory for one run of the parser. Everything is given back at once when the arena ends: the parse
// tree is never torn down node by node, which the parser would do by recursion and slowly.
//
// Some markup makes a parser build a tree far larger than the text (formatting elements that are
// opened again in every paragraph), or needs time that grows with the square of its length. The
// arena ends such a run when it exceeds its memory or its time: control then returns to where
// `setjmp` was called with LimitReached(). Only the parser's C frames lie between.
//
// Memory that has not been given before is zero: the parser reads whether a fragment's document is
// in quirks mode without ever having set it, and 0 says that it is not.

#include <chrono>
#include <csetjmp>
#include <cstddef>
#include <memory>
#include <vector>

namespace HtmlEngine::Internal {

class GumboArena {
public:
    struct Limits {
        std::size_t bytes;
        std::chrono::milliseconds time;
    };

    explicit GumboArena(Limits limits);

    GumboArena(const GumboArena&) = delete;
    GumboArena& operator=(const GumboArena&) = delete;
    ~GumboArena();

    std::jmp_buf& LimitReached() { return limitReached_; }

    /// Whether it was the time that ended the run.
    bool RanOutOfTime() const { return ranOutOfTime_; }

    /// The parser's allocation functions; `arena` is a GumboArena.
    static void* Allocate(void* arena, std::size_t size);
    static void Deallocate(void* arena, void* block);

private:
    struct FreeBlock {
        FreeBlock* next;
    };

    /// Precedes every block. Blocks are aligned for pointers, which is all that the parser stores.
    struct Header {
        std::size_t sizeClass;
    };

    static constexpr std::size_t kGranularity = 16;
    static constexpr std::size_t kSizeClasses = 256;
    static constexpr std::size_t kChunkSize = std::size_t{256} * 1024;

    /// Null when a limit is reached.
    void* Take(std::size_t size);
    bool CheckTime();

    std::vector<std::unique_ptr<std::byte[]>> chunks_;
    std::byte* free_ = nullptr;
    std::size_t freeSize_ = 0;
    FreeBlock* recycled_[kSizeClasses] = {};
    Limits limits_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    std::size_t used_ = 0;
    std::size_t calls_ = 0;
    bool ranOutOfTime_ = false;
    std::jmp_buf limitReached_;
};

}  // namespace HtmlEngine::Internal
