#include "web/RecoveryKeeper.h"

#include "actions/ActionRefused.h"
#include "documents/InputFile.h"
#include "web/BrowserSession.h"
#include "web/ClientMessage.h"

#include <nlohmann/json.hpp>

#include <system_error>
#include <utility>

namespace Workbench {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

void RecoveryKeeper::Look(const OpenDocument& document)
{
    if (!document.path) {
        return;
    }
    if (auto copy = FindRecoveryCopy(*document.path)) {
        lines_.push_back(document.name + " has changes that an earlier run did not save, in " +
                         copy->string() + "; the browser offers to restore them");
        entries_[document.number].offer = std::move(copy);
    }
}

std::optional<fs::path> RecoveryKeeper::Offer(DocumentNumber number) const
{
    const auto found = entries_.find(number);
    return found == entries_.end() ? std::nullopt : found->second.offer;
}

void RecoveryKeeper::Update()
{
    const auto now = Clock::now();
    for (const auto& document : session_.Documents().All()) {
        Entry& entry = entries_[document->number];
        if (!document->content->Modified()) {
            if (entry.copy != nullptr) {
                std::exchange(entry.copy, nullptr)->Discard();
            }
            entry.editedAt.reset();
        } else if (document->content->Revision() != entry.revision || entry.copy == nullptr) {
            entry.editedAt = entry.editedAt.value_or(now);
            if (now - *entry.editedAt >= options_.delay && !entry.isBeingWritten &&
                !session_.Jobs().IsHeld(document->number)) {
                Write(*document, entry);
            }
        }
    }
}

// Edits wait for the job, so the copy is of one state. A copy that fails is tried again after the
// next edit.
void RecoveryKeeper::Write(const OpenDocument& document, Entry& entry)
{
    if (entry.copy == nullptr) {
        entry.copy = std::make_shared<KeptCopy>();
    }
    entry.isBeingWritten = true;
    entry.editedAt.reset();
    entry.revision = document.content->Revision();
    session_.RunJob<RecoveryCopy>(
        document, DocumentJobs::Kind::kRead,
        [copy = entry.copy, content = document.content, name = document.name, path = document.path,
         folders = options_.folders] { return copy->Write(*content, name, path, folders); },
        [number = document.number](BrowserSession& session, std::future<RecoveryCopy> written) {
            RecoveryKeeper& keeper = session.Recovery();
            session.CheckWarnings(number);
            if (const auto found = keeper.entries_.find(number); found != keeper.entries_.end()) {
                found->second.isBeingWritten = false;
            }
            std::string error;
            try {
                error = written.get().error;
            } catch (const std::exception& exception) {
                error = exception.what();
            }
            if (!error.empty()) {
                session.Clients().Notify(error);
                keeper.lines_.push_back(std::move(error));
            }
        });
}

void RecoveryKeeper::Forget(DocumentNumber number)
{
    const auto closed = entries_.extract(number);
    if (!closed.empty() && closed.mapped().copy != nullptr) {
        closed.mapped().copy->Discard();
    }
}

std::vector<std::string> RecoveryKeeper::Finish(bool discards)
{
    std::vector<std::string> lines;
    for (const auto& document : session_.Documents().All()) {
        std::shared_ptr<KeptCopy>& copy = entries_[document->number].copy;
        if (discards || !document->content->Modified()) {
            Forget(document->number);
            continue;
        }
        if (copy == nullptr) {
            copy = std::make_shared<KeptCopy>();
        }
        const RecoveryCopy written =
            copy->Write(*document->content, document->name, document->path, options_.folders);
        lines.push_back(written.error.empty()
                            ? document->name + " was not saved; a copy of it as it was is " +
                                  written.file.string()
                            : written.error);
    }
    return lines;
}

std::vector<std::string> RecoveryKeeper::TakeLines()
{
    return std::exchange(lines_, {});
}

// --- The offer ---

CommandReply RecoveryKeeper::Answer(const CommandCall& call)
{
    const OpenDocument& document = call.Document();
    const std::string use = call.Message().Text("use");
    if (use != "restore" && use != "discard") {
        throw MessageError(R"("use" must be "restore" or "discard")");
    }
    const std::optional<fs::path> copy = Offer(document.number);
    if (!copy) {
        throw ActionRefused(document.name + " has no changes to restore (any more)",
                            RefusalReason::kGone);
    }
    if (use == "restore") {
        Restore(call);
        return kRepliesLater;
    }
    std::error_code error;
    if (!fs::remove(*copy, error) && error) {
        throw ActionRefused(copy->string() + ": " + error.message(), RefusalReason::kWrite);
    }
    entries_[document.number].offer.reset();
    session_.MarkChanged(document.number);
    return CommandDone();
}

void RecoveryKeeper::Restore(const CommandCall& call)
{
    const OpenDocument& document = call.Document();
    const fs::path copy = *Offer(document.number);
    session_.RunOnWorker<DocumentFile>(
        [copy, name = document.name,
         options = ReadingOptions{document.password, session_.ListsAll()}] {
            return ReadDocumentBytes(Documents::ReadInputFile(copy).bytes, name, options);
        },
        [request = call.request, number = document.number, copy](BrowserSession& session,
                                                                 std::future<DocumentFile> read) {
            session.Answer(request, [&] {
                DocumentFile restored = read.get();
                OpenDocument& former = session.Documents().Require(number);
                if (former.content->Modified() || session.Jobs().IsHeld(number)) {
                    throw ActionRefused(former.name + " has changes that are not saved",
                                        RefusalReason::kUnsaved);
                }
                restored.name = former.name;
                restored.path = former.path;
                restored.stamp = former.stamp;
                restored.password = former.password;
                restored.content->MarkModified();
                session.Close(former);
                // The copy that was offered is this document's from now on.
                const auto kept = std::make_shared<KeptCopy>(copy);
                const OpenDocument& opened = session.Open(std::move(restored));
                Entry& entry = session.Recovery().entries_[opened.number];
                entry.copy = kept;
                entry.revision = opened.content->Revision();
                return CommandReply(Json{{"document", opened.number}});
            });
        });
}

}  // namespace Workbench
