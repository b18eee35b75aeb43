// Handler of the signals that end the workbench: SIGINT, SIGHUP and SIGTERM.
#pragma once

#include <functional>
#include <memory>

namespace Workbench {

// While an object lives, each signal calls `take` with its number on a separate thread. When `take`
// returns false, the process exits at once. At most one object at a time.
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
