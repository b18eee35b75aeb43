// Recovery copies while the workbench runs: each document with unsaved changes is copied some time
// after an edit, so that little is lost when the process is killed, and a copy that an earlier run
// has left is offered when its document is opened. [ui-thread]
#pragma once

#include "actions/OpenDocuments.h"
#include "web/Commands.h"
#include "web/RecoveryCopies.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Workbench {

class BrowserSession;

struct RecoveryOptions {
    // Folders for copies that cannot be written beside their originals.
    std::vector<std::filesystem::path> folders{};
    // Time from an edit to the copy that has it.
    std::chrono::milliseconds delay = std::chrono::seconds(30);
};

class RecoveryKeeper {
public:
    // The session outlives this.
    RecoveryKeeper(BrowserSession& session, RecoveryOptions options)
        : session_(session), options_(std::move(options))
    {
    }

    // Looks for a copy that the document, just opened, can be restored from; Offer has its path.
    void Look(const OpenDocument& document);
    std::optional<std::filesystem::path> Offer(DocumentNumber number) const;

    // Starts the copies that are due, and removes those of documents without unsaved changes. To be
    // called often.
    void Update();

    // Of a document that is closed: removes its copy, and leaves the one that was offered.
    void Forget(DocumentNumber number);

    // Copies all documents with unsaved changes, or removes their copies; one line for each
    // document with its copy or the reason that there is none. For the end, when no worker runs.
    std::vector<std::string> Finish(bool discards);

    // Lines for the terminal since the last call.
    std::vector<std::string> TakeLines();

    // Carries out the command "recovery": restores the document from the copy, or removes the copy.
    CommandReply Answer(const CommandCall& call);

private:
    using Clock = std::chrono::steady_clock;

    struct Entry {
        std::optional<std::filesystem::path> offer;
        std::shared_ptr<KeptCopy> copy;             // null: none
        std::uint64_t revision = 0;                 // that the copy has
        std::optional<Clock::time_point> editedAt;  // first edit that the copy lacks
        bool isBeingWritten = false;
    };

    void Write(const OpenDocument& document, Entry& entry);
    void Restore(const CommandCall& call);

    BrowserSession& session_;
    const RecoveryOptions options_;
    std::map<DocumentNumber, Entry> entries_;
    std::vector<std::string> lines_;
};

}  // namespace Workbench
