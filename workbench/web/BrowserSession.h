// The session between open documents and browser clients: receives the clients' messages, and sends
// every change to all of them after each call of the UI thread. Files are read, written and
// released on worker threads. [ui-thread]
#pragma once

#include "actions/ActionRefused.h"
#include "actions/OpenDocuments.h"
#include "services/PanelElements.h"
#include "web/AnnotationLists.h"
#include "web/BrowserClients.h"
#include "web/Commands.h"
#include "web/CommentFinder.h"
#include "web/CurrentComment.h"
#include "web/DocumentContents.h"
#include "web/DocumentJobs.h"
#include "web/PanelStream.h"
#include "web/RecoveryKeeper.h"
#include "web/SavePrompt.h"
#include "web/WorkerThreads.h"

#include <nlohmann/json_fwd.hpp>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace Workbench {

struct BrowserSessionOptions {
    bool listAll = false;  // documents that clients open list every annotation
    std::size_t mostMessageBytes = HttpServerOptions{}.mostMessageBytes;  // that the server takes
    RecoveryOptions recovery{};
};

class BrowserSession : public std::enable_shared_from_this<BrowserSession> {
public:
    using Json = nlohmann::ordered_json;

    // The host's panel must be started. Host, documents and workers outlive the session.
    BrowserSession(Host& host, OpenDocuments& documents, WorkerThreads& workers,
                   const BrowserSessionOptions& options, BrowserClients::Sender send);
    ~BrowserSession();
    BrowserSession(const BrowserSession&) = delete;
    BrowserSession& operator=(const BrowserSession&) = delete;

    // --- Clients ---

    // Adds a client and sends it the complete state.
    void Connect(SocketNumber client);
    void Disconnect(SocketNumber client);
    // What cannot be carried out is answered by a refusal; a wish to see more of the panel, by the
    // changes that show it.
    void Receive(SocketNumber client, const std::string& text);

    // Sends the changes since the last call to all clients. To be called after each call of the UI
    // thread.
    void Update();

    // Sends all clients the message that the workbench ends.
    void SayGoodbye();

    // --- Replies to commands. The changes made by the command are sent before its reply. ---

    void Reply(const ClientRequest& request, const Json& more);
    void Refuse(const ClientRequest& request, const std::string& error, RefusalReason reason);
    // Sends the result of `act` as the reply, unless it replies later; an exception becomes a
    // refusal.
    void Answer(const ClientRequest& request, const std::function<CommandReply()>& act);

    // --- Documents ---

    // Opens a view of a document, which becomes the active one.
    OpenDocument& Open(DocumentFile file);
    void Close(OpenDocument& document);
    void Activate(const OpenDocument& document);
    void ReopenView(OpenDocument& document, bool readOnly);
    // Throws std::runtime_error for a language that there is not.
    void SwitchLanguage(const std::string& language);

    // Marks a document's description as changed, for changes other than those of edits, views and
    // lists, which are noticed by themselves.
    void MarkChanged(DocumentNumber number) { changed_.insert(number); }

    // The same when reading the file has added warnings that clients do not know.
    void CheckWarnings(DocumentNumber number);

    // Focuses a comment in the view, which makes the panel select it.
    void Show(const OpenDocument& document, std::uint32_t page,
              const Documents::AnnotationRef& annotation);

    // Position of the current comment. Throws ActionRefused when there is none, and when its item
    // is not `item`, the client's current item.
    CommentPosition RequireCurrent(const OpenDocument& document, std::optional<std::uint64_t> item);

    // Runs `work` on a worker thread, then `then` with its result or exception on the UI thread,
    // unless the session has ended by then.
    template <class Result>
    void RunOnWorker(std::function<Result()> work,
                     std::function<void(BrowserSession&, std::future<Result>)> then);
    // The same for long work under the document's lock.
    template <class Result>
    void RunJob(const OpenDocument& document, DocumentJobs::Kind kind, std::function<Result()> work,
                std::function<void(BrowserSession&, std::future<Result>)> then);

    // --- Parts ---

    bool ListsAll() const noexcept { return options_.listAll; }
    // Name of the user who runs the workbench, the author of comments that clients add.
    const std::u16string& Author() const noexcept { return author_; }
    Host& TheHost() noexcept { return host_; }
    OpenDocuments& Documents() noexcept { return documents_; }
    BrowserClients& Clients() noexcept { return clients_; }
    DocumentJobs& Jobs() noexcept { return jobs_; }
    AnnotationLists& Annotations() noexcept { return annotations_; }
    DocumentContents& Contents() noexcept { return contents_; }
    SavePrompt& Prompt() noexcept { return prompt_; }
    CommentFinder& Finder() noexcept { return finder_; }
    RecoveryKeeper& Recovery() noexcept { return recovery_; }
    PanelStream& PanelTree() noexcept { return panel_; }
    CurrentComment& Current(const OpenDocument& document);

private:
    const HtmlEngine::Document& PanelDocument() const { return *host_.Panel().Document(); }

    void SendPanel(SocketNumber client);
    void FollowView(const OpenDocument& document);
    void FollowEdit(DocumentNumber number, const std::vector<Documents::Change>& changes);
    void FollowPanel();

    Json Describe(OpenDocument& document);
    Json DescribeDocuments();
    void TellPanelChanges();
    void TellDocumentChanges();

    Host& host_;
    OpenDocuments& documents_;
    WorkerThreads& workers_;
    const BrowserSessionOptions options_;
    const std::u16string author_;  // asked of the system once
    BrowserClients clients_;
    DocumentJobs jobs_;
    AnnotationLists annotations_;
    DocumentContents contents_;
    SavePrompt prompt_;
    RecoveryKeeper recovery_;
    CommentFinder finder_;
    PanelStream panel_;
    std::map<DocumentNumber, CurrentComment> currents_;

    // Changes that are not sent yet.
    bool listChanged_ = false;          // the open documents, or the active one
    std::set<DocumentNumber> changed_;  // documents whose description changed
    HtmlEngine::ElementHandle scrollTo_ = HtmlEngine::kNoElement;  // to be scrolled into view
};

template <class Result>
void BrowserSession::RunOnWorker(std::function<Result()> work,
                                 std::function<void(BrowserSession&, std::future<Result>)> then)
{
    workers_.Post([work = std::move(work), then = std::move(then), session = weak_from_this(),
                   &loop = host_.State().loop] {
        std::packaged_task<Result()> task(work);
        const auto result = std::make_shared<std::future<Result>>(task.get_future());
        task();
        loop.Post([then, session, result] {
            if (const auto living = session.lock()) {
                then(*living, std::move(*result));
            }
        });
    });
}

template <class Result>
void BrowserSession::RunJob(const OpenDocument& document, DocumentJobs::Kind kind,
                            std::function<Result()> work,
                            std::function<void(BrowserSession&, std::future<Result>)> then)
{
    jobs_.Begin(document.number, kind);
    RunOnWorker<Result>(std::move(work), [number = document.number, kind, then = std::move(then)](
                                             BrowserSession& session, std::future<Result> result) {
        session.jobs_.End(number, kind, [&] { then(session, std::move(result)); });
    });
}

}  // namespace Workbench
