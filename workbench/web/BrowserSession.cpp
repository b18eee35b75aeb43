#include "web/BrowserSession.h"

#include "services/KeyNames.h"
#include "web/Author.h"
#include "web/ClientMessage.h"
#include "web/DocumentJson.h"
#include "web/PanelInput.h"

#include <nlohmann/json.hpp>

namespace Workbench {

using HtmlEngine::ElementHandle;

namespace {

nlohmann::ordered_json DescribeKeys()
{
    auto names = nlohmann::ordered_json::array();
    for (const NamedKey& key : PanelKeys()) {
        names.push_back(key.browserName);
    }
    return names;
}

}  // namespace

BrowserSession::BrowserSession(Host& host, OpenDocuments& documents, WorkerThreads& workers,
                               const BrowserSessionOptions& options, BrowserClients::Sender send)
    : host_(host),
      documents_(documents),
      workers_(workers),
      options_(options),
      author_(UserName()),
      clients_(std::move(send)),
      jobs_(documents, [this](DocumentNumber number) { MarkChanged(number); }),
      contents_(*this),
      prompt_(*this),
      recovery_(*this, options.recovery),
      finder_(*this),
      panel_(*host.Panel().Document())
{
    host_.Panel().SetScrollCallback([this](ElementHandle element) {
        scrollTo_ = clients_.IsEmpty() ? HtmlEngine::kNoElement : element;
    });
}

BrowserSession::~BrowserSession()
{
    host_.Panel().SetScrollCallback({});
}

// --- Clients ---

void BrowserSession::Connect(SocketNumber client)
{
    Update();
    if (clients_.IsEmpty()) {  // everything is described below
        listChanged_ = false;
        changed_.clear();
    }
    clients_.Send(client, {{"type", "hello"},
                           {"version", 1},
                           {"keys", DescribeKeys()},
                           {"mostMessageBytes", options_.mostMessageBytes}});
    clients_.Send(client, {{"type", "locale"}, {"name", host_.Locale().Language()}});
    clients_.Send(client, DescribeDocuments());
    clients_.Add(client);
    panel_.Connect(client);
    SendPanel(client);
    prompt_.Tell(client);
}

void BrowserSession::Disconnect(SocketNumber client)
{
    clients_.Remove(client);
    panel_.Disconnect(client);
    finder_.Forget(client);
}

void BrowserSession::Receive(SocketNumber client, const std::string& text)
{
    try {
        const auto message = std::make_shared<const ClientMessage>(text);
        const std::string type = message->Text("type");
        if (type == "click" || type == "key") {
            TakePanelInput(*this, client, *message, type == "key");
        } else if (type == "window") {
            const auto [fromPage, fromItem] = message->NumberPair("from");
            const auto [toPage, toItem] = message->NumberPair("to");
            panel_.ViewOf(client).MoveWindow(message->Number("list"), {fromPage, fromItem},
                                             {toPage, toItem});
            SendPanel(client);
        } else if (type == "tooltip") {
            panel_.ViewOf(client).OpenTooltip(message->Number("element"));
            SendPanel(client);
        } else if (type == "command") {
            RunCommand(*this, {client, message->Number("id"), message});
        } else {
            throw MessageError("there is no message of type \"" + type + "\"");
        }
    } catch (const std::exception& error) {
        clients_.Send(client, {{"type", "refused"}, {"reason", error.what()}});
    }
}

void BrowserSession::Update()
{
    for (const Failure& failure : host_.State().failures.Take()) {
        clients_.Notify(Workbench::Describe(failure));
    }
    host_.State().calls.Take();
    contents_.WriteDue();
    recovery_.Update();
    // Without clients the stream notes no changes.
    if (clients_.IsEmpty() || panel_.HasChanged()) {
        FollowPanel();
    }
    panel_.ForgetChange();
    if (!clients_.IsEmpty()) {
        TellPanelChanges();
        TellDocumentChanges();
    }
}

void BrowserSession::TellPanelChanges()
{
    for (const SocketNumber client : clients_.All()) {
        SendPanel(client);
    }
    const ElementHandle element = std::exchange(scrollTo_, HtmlEngine::kNoElement);
    if (element != HtmlEngine::kNoElement) {
        clients_.Broadcast({{"type", "scroll"},
                            {"element", IdOf(element)},
                            {"row", DescribeRow(PanelDocument(), element)}});
    }
}

void BrowserSession::SendPanel(SocketNumber client)
{
    for (PanelMessage& message : panel_.TakeMessages(client)) {
        clients_.Send(client, std::move(message));
    }
}

void BrowserSession::TellDocumentChanges()
{
    const std::set<DocumentNumber> changed = std::exchange(changed_, {});
    if (std::exchange(listChanged_, false)) {
        clients_.Broadcast(DescribeDocuments());
    } else {
        for (const DocumentNumber number : changed) {
            if (OpenDocument* const document = documents_.Find(number)) {
                clients_.Broadcast({{"type", "document"}, {"document", Describe(*document)}});
            }
        }
        if (changed.empty()) {
            return;
        }
    }
    prompt_.Update();
}

void BrowserSession::SayGoodbye()
{
    Update();
    clients_.Broadcast({{"type", "goodbye"}});
}

// --- Answers ---

void BrowserSession::Reply(const ClientRequest& request, const Json& more)
{
    Update();
    Json reply = {{"type", "reply"}, {"id", request.id}, {"error", nullptr}};
    reply.update(more);
    clients_.Send(request.socket, reply);
}

void BrowserSession::Refuse(const ClientRequest& request, const std::string& error,
                            RefusalReason reason)
{
    Reply(request, {{"error", error}, {"reason", WordOf(reason)}});
}

void BrowserSession::Answer(const ClientRequest& request, const std::function<CommandReply()>& act)
{
    try {
        if (const CommandReply reply = act()) {
            Reply(request, *reply);
        }
    } catch (const ActionRefused& refused) {
        Refuse(request, refused.what(), refused.Reason());
    } catch (const std::exception& error) {
        Refuse(request, error.what(), RefusalReason::kOther);
    }
}

// --- Documents ---

OpenDocument& BrowserSession::Open(DocumentFile file)
{
    OpenDocument& document = documents_.Open(std::move(file));
    FollowView(document);
    recovery_.Look(document);
    listChanged_ = true;
    return document;
}

void BrowserSession::Close(OpenDocument& document)
{
    const DocumentNumber number = document.number;
    const std::unique_ptr<OpenDocument> closed = documents_.Close(document);
    listChanged_ = true;
    currents_.erase(number);
    annotations_.Forget(number);
    contents_.Forget(number);
    recovery_.Forget(number);
    jobs_.Forget(number);
    // Releasing a large document takes long.
    workers_.Post([content = std::move(closed->content)] {});
}

void BrowserSession::Activate(const OpenDocument& document)
{
    documents_.Activate(document);
    listChanged_ = true;
}

void BrowserSession::ReopenView(OpenDocument& document, bool readOnly)
{
    Current(document).Keep();
    MarkChanged(document.number);
    try {
        documents_.ReopenView(document, readOnly);
    } catch (...) {
        FollowView(document);
        throw;
    }
    FollowView(document);
}

void BrowserSession::SwitchLanguage(const std::string& language)
{
    const std::string former = host_.Locale().Language();
    const auto tell = [&] {
        if (const std::string present = host_.Locale().Language(); present != former) {
            clients_.Broadcast({{"type", "locale"}, {"name", present}});
        }
    };
    try {
        host_.SwitchLanguage(language);
    } catch (...) {
        tell();  // the panel may have failed behind the switch
        throw;
    }
    tell();
}

void BrowserSession::CheckWarnings(DocumentNumber number)
{
    const OpenDocument* const document = documents_.Find(number);
    if (document != nullptr && document->content->Warnings().size() != document->warningsTold) {
        MarkChanged(number);
    }
}

// The panel may outlive the session, and with it the view and its document.
void BrowserSession::FollowView(const OpenDocument& document)
{
    const DocumentNumber number = document.number;
    document.Object().SetEditCallback([session = weak_from_this(), number](const auto& changes) {
        if (const auto living = session.lock()) {
            living->FollowEdit(number, changes);
        }
    });
    document.view->View().SetChangeCallback([session = weak_from_this(), number] {
        if (const auto living = session.lock()) {
            living->MarkChanged(number);
        }
    });
}

void BrowserSession::FollowEdit(DocumentNumber number,
                                const std::vector<Documents::Change>& changes)
{
    if (OpenDocument* const document = documents_.Find(number)) {
        MarkChanged(number);
        contents_.NoteEdit(number);
        Current(*document).FollowEdit(changes, document->view->View(), PanelDocument());
    }
}

void BrowserSession::FollowPanel()
{
    for (const auto& document : documents_.All()) {
        Current(*document).Update(document->view->View(), PanelDocument());
    }
}

CurrentComment& BrowserSession::Current(const OpenDocument& document)
{
    const DocumentNumber number = document.number;
    return currents_.try_emplace(number, [this, number] { MarkChanged(number); }).first->second;
}

void BrowserSession::Show(const OpenDocument& document, std::uint32_t page,
                          const Documents::AnnotationRef& annotation)
{
    Current(document).Show({page, annotation}, document.view->View(), PanelDocument());
}

CommentPosition BrowserSession::RequireCurrent(const OpenDocument& document,
                                               std::optional<std::uint64_t> item)
{
    const CurrentComment& current = Current(document);
    if (!current.HasList()) {
        throw ActionRefused("the comments of " + document.name + " are still being listed",
                            RefusalReason::kListing);
    }
    const auto position = current.PositionIn(*document.content);
    if (item && *item != IdOf(current.Item())) {
        throw ActionRefused("another comment of " + document.name + " is current meanwhile",
                            RefusalReason::kOtherComment);
    }
    if (!position) {
        throw ActionRefused("no comment of " + document.name + " is current",
                            RefusalReason::kNoComment);
    }
    return *position;
}

// --- Descriptions ---

BrowserSession::Json BrowserSession::Describe(OpenDocument& document)
{
    const CurrentComment& current = Current(document);
    const bool isSaving = jobs_.IsSaving(document.number);
    document.warningsTold = document.content->Warnings().size();
    const char* const busy = isSaving ? "saving" : current.IsLoading() ? "listing" : nullptr;
    Json description = DescribeDocument(document, busy, recovery_.Offer(document.number));
    if (const auto position = current.PositionIn(*document.content)) {
        description["current"] = {{"page", position->page},
                                  {"index", position->index},
                                  {"item", IdOf(current.Item())},
                                  {"row", DescribeRow(PanelDocument(), current.Item())}};
    }
    return description;
}

BrowserSession::Json BrowserSession::DescribeDocuments()
{
    const OpenDocument* const active = documents_.FindActive();
    Json list = Json::array();
    for (const auto& document : documents_.All()) {
        list.push_back(Describe(*document));
    }
    return {{"type", "documents"},
            {"active", active == nullptr ? Json(nullptr) : Json(active->number)},
            {"documents", std::move(list)}};
}

}  // namespace Workbench
