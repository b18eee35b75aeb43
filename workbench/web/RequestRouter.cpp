#include "web/RequestRouter.h"

#include "service-common/UnicodeText.h"
#include "services/ModuleLibrary.h"
#include "services/ResourceStore.h"
#include "web/BrowserSession.h"
#include "web/DocumentJson.h"
#include "web/FileCommands.h"
#include "web/StaticFiles.h"
#include "web/StyleAdapter.h"

#include <nlohmann/json.hpp>

#include <charconv>
#include <limits>
#include <span>
#include <utility>

namespace Workbench {

namespace {

constexpr std::string_view kStyleType = "text/css; charset=utf-8";

std::span<const std::string> Below(const Url& url, std::size_t steps)
{
    return std::span(url.path).subspan(steps);
}

std::string QueryText(const Url& url, const char* name)
{
    const auto found = url.query.find(name);
    return found == url.query.end() ? std::string() : found->second;
}

DocumentNumber NumberIn(const std::string& text)
{
    DocumentNumber number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? number : 0;
}

}  // namespace

ServedFolders DefaultServedFolders()
{
    return {ProgramFolder() / "web", ProgramFolder() / "pdfjs", ProgramFolder() / "artwork", {}};
}

RequestRouter::RequestRouter(UiThreadLoop& loop, ServedFolders folders)
    : loop_(loop), folders_(std::move(folders))
{
}

void RequestRouter::Serve(const std::shared_ptr<BrowserSession>& session, HttpServer& server)
{
    session_ = session;
    server_ = &server;
}

void RequestRouter::OnRequest(HttpRequest request, PendingAnswerPtr answer)
{
    if (request.isPost) {
        PostUpload(std::move(request), std::move(answer));
    } else if (request.url.path.front() != "documents") {
        answer->Give(FileAnswer(request.url));
    } else if (!PostContent(request.url, answer)) {
        answer->Give({.status = 404});
    }
}

HttpAnswer RequestRouter::FileAnswer(const Url& url) const
{
    const std::string& folder = url.path.front();
    if (folder.empty()) {
        const std::string page = "index.html";
        return ServeFile(folders_.client, std::span(&page, 1));
    }
    if (folder == "app") {
        HttpAnswer answer = ServeFile(folders_.client, Below(url, 1));
        const bool isPanelFrame = url.path.size() == 2 && url.path[1] == "panel.html";
        answer.policy = isPanelFrame ? ContentPolicy::kPanelFrame : ContentPolicy::kPage;
        return answer;
    }
    if (folder == "pdfjs") {
        HttpAnswer answer = ServeFile(folders_.pdfjs, Below(url, 1));
        answer.mayBeKept = answer.status == 200;
        return answer;
    }
    if (folder == "locales" && url.path.size() == 1) {
        return LocalesAnswer();
    }
    return folder == "panel" ? PanelResource(url) : HttpAnswer{.status = 404};
}

// All languages as members of one object, sorted by name; a malformed file is left out.
HttpAnswer RequestRouter::LocalesAnswer() const
{
    auto all = nlohmann::json::object();
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folders_.locales, error), end;
         !error && entry != end; entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        const auto bytes = ReadServedFile(folders_.locales, std::span(&name, 1));
        auto json = nlohmann::json::parse(bytes.value_or(""), nullptr, false);
        if (entry->path().extension() == ".json" && json.is_object()) {
            all[entry->path().stem().string()] = std::move(json);
        }
    }
    return JsonAnswer(200, all);
}

// Style sheets and images of the panel. `common` is the host's part, in the web page's folder. The
// module has no vector sources; they are those of the tree that it was built from.
HttpAnswer RequestRouter::PanelResource(const Url& url) const
{
    const std::string_view type = ContentTypeOf(url.path.back());
    if (url.path.size() < 3 || (type != kStyleType && !type.starts_with("image/"))) {
        return {.status = 404};
    }
    std::optional<std::string> bytes;
    if (url.path[1] == "common") {
        bytes = ReadServedFile(folders_.client, Below(url, 1));
    } else if (url.path[1] == "document-panel-comments" && url.path[2] == "artwork") {
        bytes = ReadServedFile(folders_.artwork, Below(url, 3));
    } else {
        std::string path;
        for (const std::string& step : Below(url, 1)) {
            path += (path.empty() ? "" : "/") + step;
        }
        const auto found = ResourceStore::Instance().Find(UnicodeText::ToUtf16(path));
        if (found.data != nullptr) {
            bytes.emplace(reinterpret_cast<const char*>(found.data), found.size);
        }
    }
    if (!bytes) {
        return {.status = 404};
    }
    if (type == kStyleType) {
        *bytes = AdaptStyleSheet(*bytes);
    }
    return {.contentType = std::string(type),
            .body = std::make_shared<const std::string>(std::move(*bytes))};
}

void RequestRouter::PostUpload(HttpRequest request, PendingAnswerPtr answer)
{
    const auto held = std::make_shared<HttpRequest>(std::move(request));
    loop_.Post([session = session_, held, answer = std::move(answer)] {
        if (const auto living = session.lock()) {
            OpenUpload(*living, QueryText(held->url, "name"), QueryText(held->url, "password"),
                       std::move(held->body), answer);
        }
    });
}

bool RequestRouter::PostContent(const Url& url, const PendingAnswerPtr& answer)
{
    if (url.path.size() != 3 || (url.path[2] != "content" && url.path[2] != "download")) {
        return false;
    }
    loop_.Post([session = session_, number = NumberIn(url.path[1]),
                asDownload = url.path[2] == "download", answer] {
        if (const auto living = session.lock()) {
            living->Contents().Give(number, asDownload, answer);
        }
    });
    return true;
}

void RequestRouter::OnSocketOpened(SocketNumber socket)
{
    loop_.Post([session = session_, server = server_, socket] {
        if (const auto living = session.lock()) {
            try {
                living->Connect(socket);
            } catch (...) {
                server->CloseSocket(socket);  // the client connects again
                throw;
            }
        }
    });
}

void RequestRouter::OnSocketMessage(SocketNumber socket, std::string text)
{
    loop_.Post([session = session_, server = server_, socket, text = std::move(text)] {
        if (const auto living = session.lock()) {
            living->Receive(socket, text);
            server->TakeNext(socket);
        }
    });
}

void RequestRouter::OnSocketClosed(SocketNumber socket)
{
    loop_.Post([session = session_, socket] {
        if (const auto living = session.lock()) {
            living->Disconnect(socket);
        }
    });
}

}  // namespace Workbench
