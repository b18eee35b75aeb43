// Log of the module's calls into the host's documents and views, for tests and the driver. Requests
// (go to, focus, execute) are always recorded; queries, which a rendering makes by the thousand,
// only on demand. [any-thread]
#pragma once

#include <nlohmann/json.hpp>

#include <atomic>
#include <mutex>
#include <utility>

namespace Workbench {

class CallLog {
public:
    using Json = nlohmann::ordered_json;

    // Writes ["BLDocumentView.GoTo", arguments...].
    template <class... Args>
    void Request(const char* name, Args&&... arguments)
    {
        Add(Json::array({name, std::forward<Args>(arguments)...}));
    }

    template <class... Args>
    void Query(const char* name, Args&&... arguments)
    {
        if (logsQueries_.load(std::memory_order_relaxed)) {
            Request(name, std::forward<Args>(arguments)...);
        }
    }

    void LogQueries(bool enabled) noexcept { logsQueries_ = enabled; }

    // The calls since the last Take, oldest first, as an array of arrays.
    Json Take()
    {
        const std::lock_guard lock(mutex_);
        return std::exchange(calls_, Json::array());
    }

private:
    void Add(Json call)
    {
        const std::lock_guard lock(mutex_);
        calls_.push_back(std::move(call));
    }

    std::atomic<bool> logsQueries_ = false;
    std::mutex mutex_;
    Json calls_ = Json::array();
};

}  // namespace Workbench
