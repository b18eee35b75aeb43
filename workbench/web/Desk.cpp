#include "web/Desk.h"

#include "web/Author.h"
#include "web/JsonText.h"

#include <algorithm>
#include <fstream>
#include <string_view>

namespace Workbench {

namespace {

using HtmlEngine::ElementHandle;

std::shared_ptr<const std::string> Shared(std::string text)
{
    return std::make_shared<const std::string>(std::move(text));
}

}  // namespace

Desk::Desk(Host& host, WorkerThreads& workers, bool listAll, Sender send)
    : host_(host),
      workers_(workers),
      listAll_(listAll),
      send_(std::move(send)),
      locales_(DescribeLocales()),
      author_(UserName()),
      panel_(*host.Panel().Page())
{
    host_.Panel().SetScrollCallback([this](ElementHandle element) {
        scrollTo_ = pages_.empty() ? 0 : panel_.NumberOf(element);
    });
}

Desk::~Desk()
{
    host_.Panel().SetScrollCallback({});
}

Desk::Json Desk::DescribeLocales() const
{
    Json locales = Json::array();
    for (const LocaleTitle& title : host_.Locale().Titles()) {
        locales.push_back({{"name", title.language},
                           {"title", title.name},
                           {"direction", title.isRightToLeft ? "rtl" : "ltr"}});
    }
    return locales;
}

std::string Desk::DescribeDocuments() const
{
    const OpenDocument* const activeDocument = ActiveDocument();
    const Json active = activeDocument == nullptr ? Json(nullptr) : Json(activeDocument->number);
    Json list = Json::array();
    for (const auto& document : documents_) {
        list.push_back(DescribeDocument(*document, *host_.Panel().Page()));
    }
    return ToText({{"type", "documents"}, {"active", active}, {"documents", std::move(list)}});
}

void Desk::Send(SocketNumber page, const Json& message)
{
    send_(page, Shared(ToText(message)));
}

void Desk::Broadcast(const Json& message)
{
    const auto text = Shared(ToText(message));
    for (const Page& page : pages_) {
        send_(page.socket, text);
    }
}

void Desk::SendPanel(Page& page, const std::vector<PanelMessage>& messages)
{
    for (const PanelMessage& message : messages) {
        std::string text = "{\"type\":\"panel\",\"sequence\":";
        text.reserve(text.size() + message.rest.size() + 40);
        AppendNumber(text, ++page.sequence);
        text += message.reset ? ",\"reset\":true," : ",";
        text += message.rest;
        send_(page.socket, Shared(std::move(text)));
    }
}

void Desk::SendPanelChanges()
{
    const std::vector<PanelMessage> messages = panel_.TakeChanges();
    for (Page& page : pages_) {
        SendPanel(page, messages);
    }
    if (const std::uint64_t element = std::exchange(scrollTo_, 0); element != 0) {
        Broadcast({{"type", "scroll"}, {"element", element}});
    }
}

void Desk::Update()
{
    for (const Failure& failure : host_.State().failures.Take()) {
        Notify(Describe(failure));
    }
    host_.State().calls.Take();
    for (const auto& document : documents_) {
        document->current.Update(document->view->View(), *host_.Panel().Page());
    }
    GiveBytesWhenQuiet();
    if (pages_.empty()) {
        return;
    }
    if (std::string locale = host_.Locale().Language(); locale != sentLocale_) {
        sentLocale_ = std::move(locale);
        Broadcast({{"type", "locale"}, {"name", sentLocale_}});
    }
    SendPanelChanges();
    if (std::string documents = DescribeDocuments(); documents != sentDocuments_) {
        sentDocuments_ = std::move(documents);
        const auto text = Shared(sentDocuments_);
        for (const Page& page : pages_) {
            send_(page.socket, text);
        }
    }
    TellOfEnding();
}

Desk::Json Desk::DescribeNotice(const std::string& text, const std::string& reason)
{
    return {{"type", "notice"}, {"text", text}, {"reason", reason}};
}

void Desk::Notify(const std::string& text)
{
    Broadcast(DescribeNotice(text, {}));
}

void Desk::SayGoodbye()
{
    Update();
    Broadcast({{"type", "goodbye"}});
}

void Desk::BroadcastProgress(const std::string& name, const char* state)
{
    Broadcast({{"type", "progress"}, {"task", "open"}, {"name", name}, {"state", state}});
}

void Desk::Reply(const PageCommand& command, const std::string& error, Json more)
{
    Update();
    Json reply = {{"type", "reply"},
                  {"id", command.id},
                  {"error", error.empty() ? Json(nullptr) : Json(error)}};
    if (more.is_object()) {
        reply.update(more);
    }
    Send(command.socket, reply);
}

void Desk::Refuse(const PageCommand& command, const std::string& error, const std::string& reason)
{
    Reply(command, error, {{"reason", reason}});
}

void Desk::Answer(const PageCommand& command, const WriteOutcome& outcome)
{
    if (outcome.error.empty()) {
        Reply(command);
    } else {
        Refuse(command, outcome.error, outcome.reason);
    }
}

void Desk::Connect(SocketNumber page)
{
    Update();
    sentLocale_ = host_.Locale().Language();
    sentDocuments_ = DescribeDocuments();
    Send(page, {{"type", "hello"}, {"version", 1}, {"locales", locales_}});
    Send(page, {{"type", "locale"}, {"name", sentLocale_}});
    send_(page, Shared(sentDocuments_));
    pages_.push_back({page, 0});
    SendPanel(pages_.back(), panel_.Snapshot());
    if (ending_ && !toldUnsaved_.empty()) {
        Send(page, DescribeEnding());
    }
}

void Desk::Disconnect(SocketNumber page)
{
    std::erase_if(pages_, [page](const Page& entry) { return entry.socket == page; });
    if (pages_.empty()) {
        panel_.Rest();
    }
}

void Desk::Receive(SocketNumber page, const std::string& text)
{
    try {
        const auto message = std::make_shared<const PageMessage>(text);
        const std::string type = message->Text("type");
        if (type == "click" || type == "key") {
            Take(ReadInput(page, *message, type == "key"));
        } else if (type == "command") {
            Run({page, message->Number("id"), message});
        } else {
            throw MessageError("there is no message of type \"" + type + "\"");
        }
    } catch (const MessageError& error) {
        Send(page, {{"type", "refused"}, {"reason", error.what()}});
    }
}

void Desk::RefuseBeginning(SocketNumber page, const std::string& text)
{
    const std::string error = "the message is longer than the workbench takes";
    if (const auto id = CommandIdIn(text)) {
        Refuse({page, *id, nullptr}, error);
    } else {
        Send(page, {{"type", "refused"}, {"reason", error}});
    }
}

OpenDocument* Desk::ActiveDocument() const
{
    for (const auto& document : documents_) {
        if (document->view == host_.Collection().ActiveView()) {
            return document.get();
        }
    }
    return nullptr;
}

OpenDocument* Desk::Find(DocumentNumber number) const
{
    for (const auto& document : documents_) {
        if (document->number == number) {
            return document.get();
        }
    }
    return nullptr;
}

DocumentNumber Desk::Add(std::string name, std::optional<std::filesystem::path> path,
                         std::shared_ptr<Documents::Document> content,
                         std::optional<FileStamp> stamp)
{
    auto document = std::make_unique<OpenDocument>();
    document->number = ++lastNumber_;
    document->name = std::move(name);
    document->path = std::move(path);
    document->stamp = stamp;
    document->content = std::move(content);
    OpenView(*document);
    documents_.push_back(std::move(document));
    return lastNumber_;
}

// The panel may outlive the desk, and with it the view's document.
void Desk::OpenView(OpenDocument& document)
{
    document.view = host_.OpenView(document.content);
    document.view->View().Document()->SetEditCallback(
        [desk = weak_from_this(), number = document.number](const auto& changes) {
            const auto living = desk.lock();
            if (OpenDocument* const edited = living ? living->Find(number) : nullptr) {
                edited->current.FollowEdit(changes, edited->view->View(),
                                           *living->host_.Panel().Page());
            }
        });
}

}  // namespace Workbench
