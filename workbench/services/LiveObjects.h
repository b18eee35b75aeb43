// Counters of the host's live service objects by interface, for leak checks at shut-down.
// [any-thread]
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

namespace Workbench {

// The objects of one interface. Static storage only.
class LiveObjectCounter {
public:
    explicit LiveObjectCounter(const char* interfaceName);

    void Add(std::int64_t difference) noexcept
    {
        count_.fetch_add(difference, std::memory_order_relaxed);
    }

private:
    friend std::vector<std::string> DescribeLiveObjects();

    const char* interfaceName_;
    std::atomic<std::int64_t> count_ = 0;
};

template <class I>
LiveObjectCounter& LiveObjectCounterOf()
{
    static LiveObjectCounter counter(I::kName);
    return counter;
}

// One line for each interface with live objects: "BLDocument: 2". Empty when there are none.
std::vector<std::string> DescribeLiveObjects();

}  // namespace Workbench
