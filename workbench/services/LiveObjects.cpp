#include "services/LiveObjects.h"

#include <algorithm>
#include <mutex>

namespace Workbench {

namespace {

struct Counters {
    std::mutex mutex;
    std::vector<const LiveObjectCounter*> all;
};

Counters& AllCounters()
{
    static Counters counters;
    return counters;
}

}  // namespace

LiveObjectCounter::LiveObjectCounter(const char* interfaceName) : interfaceName_(interfaceName)
{
    Counters& counters = AllCounters();
    const std::lock_guard lock(counters.mutex);
    counters.all.push_back(this);
}

std::vector<std::string> DescribeLiveObjects()
{
    std::vector<std::string> lines;
    Counters& counters = AllCounters();
    const std::lock_guard lock(counters.mutex);
    for (const LiveObjectCounter* counter : counters.all) {
        if (const std::int64_t count = counter->count_.load(); count != 0) {
            lines.push_back(std::string(counter->interfaceName_) + ": " + std::to_string(count));
        }
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

}  // namespace Workbench
