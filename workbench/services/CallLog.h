// Log of the module's calls into the host's documents and views, for tests and the driver. Requests
// (go to, focus, execute) are always recorded; queries, which a rendering makes by the thousand,
// only on demand. [any-thread]
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace Workbench {

// One call: "BLDocumentView.GoTo" and its arguments.
struct HostCall {
    using Argument =
        std::variant<std::nullptr_t, bool, std::uint32_t, std::string, std::vector<double>>;

    const char* name;  // static
    std::vector<Argument> arguments;
};

class CallLog {
public:
    template <class... Args>
    void Request(const char* name, Args&&... arguments)
    {
        HostCall call{name, {}};
        (call.arguments.emplace_back(std::forward<Args>(arguments)), ...);
        const std::lock_guard lock(mutex_);
        calls_.push_back(std::move(call));
    }

    template <class... Args>
    void Query(const char* name, Args&&... arguments)
    {
        if (logsQueries_.load(std::memory_order_relaxed)) {
            Request(name, std::forward<Args>(arguments)...);
        }
    }

    void LogQueries(bool enabled) noexcept { logsQueries_ = enabled; }

    // The calls since the last Take, oldest first.
    std::vector<HostCall> Take()
    {
        const std::lock_guard lock(mutex_);
        return std::exchange(calls_, {});
    }

private:
    std::atomic<bool> logsQueries_ = false;
    std::mutex mutex_;
    std::vector<HostCall> calls_;
};

}  // namespace Workbench
