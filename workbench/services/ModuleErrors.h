// Errors that the module's code leaves behind where no result code tells of them: in posted calls
// and in events, which end them as the thread's last error. [ui-thread]
#pragma once

#include "services/FailureLog.h"
#include "ui-engine/UIInplacePlugin.SO.h"

#include <optional>
#include <string>
#include <utility>

namespace Workbench {

class ModuleErrors {
public:
    explicit ModuleErrors(FailureLog& failures) : failures_(failures) {}

    // The plug-in whose error record is read; null for none. Borrowed.
    void Watch(UIInplacePlugin* plugin) noexcept { plugin_ = plugin; }

    // Runs module code; an error that it leaves behind goes to the failure log, unless it says that
    // something is not there any more, as events do that lag behind their document.
    template <class Run>
    void Around(const char* where, Run&& run)
    {
        if (plugin_ == nullptr || isInside_) {
            run();
            return;
        }
        Take();
        isInside_ = true;
        try {
            run();
        } catch (...) {
            isInside_ = false;
            throw;
        }
        isInside_ = false;
        Log(where);
    }

    // The error record of the UI thread since the last call, which is gone then.
    std::optional<Failure> Take();

private:
    void Log(const char* where);

    FailureLog& failures_;
    UIInplacePlugin* plugin_ = nullptr;
    bool isInside_ = false;
};

}  // namespace Workbench
