#include "web/FileCommands.h"

#include "web/BrowserSession.h"
#include "web/ClientMessage.h"
#include "web/DocumentJson.h"
#include "web/RecoveryCopies.h"

#include <nlohmann/json.hpp>

#include <cstdlib>

namespace Workbench {

namespace fs = std::filesystem;

namespace {

using Json = nlohmann::ordered_json;
using Stamp = std::optional<FileStamp>;

bool MayOverwrite(const CommandCall& call)
{
    return call.Message().OptionalFlag("overwrite").value_or(false);
}

// A path typed by the user: relative to the workbench's working folder, or to the home folder.
fs::path PathIn(const CommandCall& call)
{
    const std::string text = call.Message().Text("path");
    if (text.empty() || text.find('\0') != std::string::npos) {
        throw ActionRefused("a path is needed", RefusalReason::kPath);
    }
    fs::path path = text;
    const char* const home = std::getenv("HOME");
    if (text.starts_with("~/") && home != nullptr) {
        path = fs::path(home) / text.substr(2);
    }
    return fs::absolute(path).lexically_normal();
}

fs::path OwnPath(const OpenDocument& document)
{
    if (!document.path) {
        throw ActionRefused(document.name + " has no place yet where it could be saved",
                            RefusalReason::kPath);
    }
    return *document.path;
}

// The file name of an upload, without any folder.
std::string PlainName(const std::string& name)
{
    const std::string last = name.substr(name.find_last_of("/\\") + 1);
    return last.empty() ? "document.pdf" : last;
}

void TellProgress(BrowserSession& session, const std::string& name, const char* state)
{
    session.Clients().Broadcast(
        Json{{"type", "progress"}, {"task", "open"}, {"name", name}, {"state", state}});
}

// Reports the outcome of reading a file; rethrows its exception.
DocumentFile Opened(BrowserSession& session, const std::string& name,
                    std::future<DocumentFile> read)
{
    try {
        DocumentFile file = read.get();
        TellProgress(session, name, "done");
        return file;
    } catch (...) {
        TellProgress(session, name, "failed");
        throw;
    }
}

// --- Commands ---

CommandReply Open(const CommandCall& call)
{
    const fs::path path = PathIn(call);
    if (const OpenDocument* const open = call.session.Documents().FindFile(path)) {
        call.session.Activate(*open);
        return Json{{"document", open->number}};
    }
    const ReadingOptions options{call.Message().OptionalText("password").value_or(""),
                                 call.session.ListsAll()};
    TellProgress(call.session, path.filename().string(), "begun");
    call.session.RunOnWorker<DocumentFile>(
        [path, options] { return ReadDocument(path, options); },
        [request = call.request, path](BrowserSession& session, std::future<DocumentFile> read) {
            session.Answer(request, [&] {
                DocumentFile file = Opened(session, path.filename().string(), std::move(read));
                // Another client may have opened the same file meanwhile.
                const OpenDocument* const open = session.Documents().FindFile(path);
                const OpenDocument& document =
                    open != nullptr ? *open : session.Open(std::move(file));
                return CommandReply(Json{{"document", document.number}});
            });
        });
    return kRepliesLater;
}

CommandReply Close(const CommandCall& call)
{
    OpenDocument& document = call.Document();
    const std::string unsaved = call.Message().OptionalText("unsaved").value_or("ask");
    if (unsaved != "ask" && unsaved != "save" && unsaved != "discard") {
        throw MessageError("\"unsaved\" must be \"ask\", \"save\" or \"discard\"");
    }
    if (!document.content->Modified() || unsaved == "discard") {
        call.session.Close(document);
        return CommandDone();
    }
    if (unsaved == "ask") {
        throw ActionRefused(document.name + " has changes that are not saved",
                            RefusalReason::kUnsaved);
    }
    SaveDocument(call.session, document, OwnPath(document), MayOverwrite(call),
                 [request = call.request, number = document.number](
                     BrowserSession& session, const std::exception_ptr& failure) {
                     if (OpenDocument* const saved = session.Documents().Find(number);
                         failure == nullptr && saved != nullptr) {
                         session.Close(*saved);
                     }
                     AnswerSaved(session, request, failure);
                 });
    return kRepliesLater;
}

CommandReply Save(const CommandCall& call)
{
    const OpenDocument& document = call.Document();
    SaveDocument(
        call.session, document, OwnPath(document), MayOverwrite(call),
        [request = call.request](BrowserSession& session, const std::exception_ptr& failure) {
            AnswerSaved(session, request, failure);
        });
    return kRepliesLater;
}

CommandReply SaveAs(const CommandCall& call)
{
    const OpenDocument& document = call.Document();
    const fs::path path = PathIn(call);
    if (const OpenDocument* const other = call.session.Documents().FindFile(path);
        other != nullptr && other != &document) {
        throw ActionRefused(path.string() + " is open as another document");
    }
    SaveDocument(call.session, document, path, MayOverwrite(call),
                 [request = call.request, path, number = document.number](
                     BrowserSession& session, const std::exception_ptr& failure) {
                     if (OpenDocument* const saved = session.Documents().Find(number);
                         failure == nullptr && saved != nullptr) {
                         saved->path = path;
                         saved->name = path.filename().string();
                     }
                     AnswerSaved(session, request, failure);
                 });
    return kRepliesLater;
}

CommandReply SaveCopy(const CommandCall& call)
{
    const OpenDocument& document = call.Document();
    const fs::path path = PathIn(call);
    if (call.session.Documents().FindFile(path) != nullptr) {
        throw ActionRefused(path.string() + " is open, a copy needs a place of its own");
    }
    const Replaceable replaceable =
        MayOverwrite(call) ? Replaceable::kAnything : Replaceable::kNothing;
    call.session.RunJob<Stamp>(
        document, DocumentJobs::Kind::kSave,
        [content = document.content, path, replaceable] {
            return WriteDocument(path, replaceable, {}, [&] { return WriteCopy(*content, path); });
        },
        [request = call.request](BrowserSession& session, std::future<Stamp> written) {
            session.Answer(request, [&] {
                written.get();
                return CommandDone();
            });
        });
    return kRepliesLater;
}

constexpr Command kCommands[] = {
    {"open", Open},
    {"close", Close, kWaits},
    {"save", Save, kWaits},
    {"save-as", SaveAs, kWaits},
    {"save-copy", SaveCopy, kWaits},
};

}  // namespace

std::span<const Command> FileCommands()
{
    return kCommands;
}

void OpenUpload(BrowserSession& session, const std::string& name, const std::string& password,
                std::string bytes, PendingAnswerPtr answer)
{
    const std::string plain = PlainName(name);
    TellProgress(session, plain, "begun");
    const auto held = std::make_shared<std::string>(std::move(bytes));
    session.RunOnWorker<DocumentFile>(
        [held, plain, options = ReadingOptions{password, session.ListsAll()}] {
            return ReadDocumentBytes(std::move(*held), plain, options);
        },
        [plain, answer = std::move(answer)](BrowserSession& opened,
                                            std::future<DocumentFile> read) {
            const auto refuse = [&](const std::exception& error, RefusalReason reason) {
                answer->Give(
                    JsonAnswer(422, {{"error", error.what()}, {"reason", WordOf(reason)}}));
            };
            try {
                const OpenDocument& document = opened.Open(Opened(opened, plain, std::move(read)));
                opened.Update();
                answer->Give(JsonAnswer(200, {{"document", document.number}}));
            } catch (const ActionRefused& refused) {
                refuse(refused, refused.Reason());
            } catch (const std::exception& error) {
                refuse(error, RefusalReason::kOther);
            }
        });
}

void SaveDocument(BrowserSession& session, const OpenDocument& document, const fs::path& path,
                  bool overwrite, SavedCallback then)
{
    const bool isOwnFile = session.Documents().FindFile(path) == &document;
    const Replaceable replaceable = overwrite   ? Replaceable::kAnything
                                    : isOwnFile ? Replaceable::kOwnFile
                                                : Replaceable::kNothing;
    session.RunJob<Stamp>(
        document, DocumentJobs::Kind::kSave,
        [content = document.content, path, replaceable, known = document.stamp] {
            return WriteDocument(path, replaceable, known, [&] { return content->Save(path); });
        },
        [number = document.number, then = std::move(then)](BrowserSession& saving,
                                                           std::future<Stamp> written) {
            std::exception_ptr failure;
            try {
                const Stamp stamp = written.get();
                if (OpenDocument* const saved = saving.Documents().Find(number)) {
                    saved->stamp = stamp;
                }
            } catch (...) {
                failure = std::current_exception();
            }
            then(saving, failure);
        });
}

void AnswerSaved(BrowserSession& session, const ClientRequest& request,
                 const std::exception_ptr& failure)
{
    session.Answer(request, [&] {
        if (failure != nullptr) {
            std::rethrow_exception(failure);
        }
        return CommandDone();
    });
}

}  // namespace Workbench
