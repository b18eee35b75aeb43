// Jobs on other threads that hold a document's lock for long, and the work that waits for them so
// that the UI thread does not. Work for one document runs in the order in which it came.
// [ui-thread]
#pragma once

#include "actions/OpenDocuments.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <map>

namespace Workbench {

class DocumentJobs {
public:
    enum class Kind : std::uint8_t { kRead, kSave };
    // Called with the document when its turn has come, with null when it was closed before.
    using Work = std::function<void(OpenDocument*)>;

    // `changed` is called when IsSaving has another answer for a document.
    DocumentJobs(const OpenDocuments& documents, std::function<void(DocumentNumber)> changed);

    bool IsHeld(DocumentNumber number) const;
    bool IsSaving(DocumentNumber number) const;
    bool HasWaiting(DocumentNumber number) const;

    // Runs the work at once, or when no job holds the document and what came before has run.
    void RunWhenFree(OpenDocument& document, Work work);
    // Puts the work behind everything that waits.
    void Append(DocumentNumber number, Work work);

    void Begin(DocumentNumber number, Kind kind);
    // Calls `then`, then runs what has waited. Does without the latter for a closed document.
    void End(DocumentNumber number, Kind kind, const std::function<void()>& then);

    // The document was closed: what waits is called with null.
    void Forget(DocumentNumber number);

private:
    struct State {
        std::uint32_t held = 0;  // number of jobs
        bool saving = false;
        std::deque<Work> waiting;
    };

    const State* Find(DocumentNumber number) const;
    void RunWaiting(DocumentNumber number);

    const OpenDocuments& documents_;
    const std::function<void(DocumentNumber)> changed_;
    std::map<DocumentNumber, State> states_;
};

}  // namespace Workbench
