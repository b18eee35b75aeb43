// Queue per document for work of the UI thread that must wait while a job on a worker thread holds
// the document's lock. Work for one document runs in order of arrival. [ui-thread]
#pragma once

#include "actions/OpenDocuments.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>

namespace Workbench {

class DocumentJobs {
public:
    enum class Kind : std::uint8_t { kRead, kSave };
    // Called with the document, or with null when the document was closed first.
    using Work = std::function<void(OpenDocument*)>;

    // `changed` is called when the result of IsSaving changes for a document.
    DocumentJobs(const OpenDocuments& documents, std::function<void(DocumentNumber)> changed);

    bool IsHeld(DocumentNumber number) const;
    bool IsSaving(DocumentNumber number) const;
    bool HasWaiting(DocumentNumber number) const;

    // Runs the work at once, or after the document's jobs and earlier work.
    void RunWhenFree(OpenDocument& document, Work work);
    // Appends the work to the queue, even when nothing holds the document.
    void Append(DocumentNumber number, Work work);

    // Set while work waits for the document's jobs: one that can be repeated may give way. Read on
    // its thread.
    std::shared_ptr<const std::atomic<bool>> Awaited(DocumentNumber number);

    void Begin(DocumentNumber number, Kind kind);
    // Calls `then`, then runs the waiting work unless the document is closed.
    void End(DocumentNumber number, Kind kind, const std::function<void()>& then);

    // To be called when the document is closed: waiting work is called with null.
    void Forget(DocumentNumber number);

private:
    struct State {
        std::uint32_t held = 0;  // number of jobs
        bool saving = false;
        std::deque<Work> waiting;
        std::shared_ptr<std::atomic<bool>> awaited = std::make_shared<std::atomic<bool>>(false);
    };

    const State* Find(DocumentNumber number) const;
    void RunWaiting(DocumentNumber number);

    const OpenDocuments& documents_;
    const std::function<void(DocumentNumber)> changed_;
    std::map<DocumentNumber, State> states_;
};

}  // namespace Workbench
