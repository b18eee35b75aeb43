// Counts the host's service objects that are alive, by interface: what a host that was shut down
// has lost. [any-thread]
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

// One line for each interface that has live objects: "BLDocument: 2". Empty when all are gone.
std::vector<std::string> DescribeLiveObjects();

}  // namespace Workbench
