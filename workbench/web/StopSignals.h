// The signals by which a user, a closed terminal or the system ends the workbench: SIGINT, SIGHUP
// and SIGTERM.
#pragma once

#include <functional>
#include <memory>

namespace Workbench {

// As long as it lives, each signal calls `take` with its number on a thread of its own. Where that
// says false, the process ends at once. There is one at a time.
class StopSignals {
public:
    explicit StopSignals(std::function<bool(int signal)> take);
    ~StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

private:
    class Waiting;

    std::unique_ptr<Waiting> waiting_;
};

}  // namespace Workbench
