#include "web/PageServer.h"

#include "service-common/UnicodeText.h"
#include "services/ModuleLibrary.h"
#include "services/ResourceStore.h"
#include "web/Desk.h"
#include "web/StaticFiles.h"
#include "web/StyleAdapter.h"

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
    return {ProgramFolder() / "web", ProgramFolder() / "pdfjs"};
}

PageServer::PageServer(UiThreadLoop& loop, ServedFolders folders)
    : loop_(loop), folders_(std::move(folders))
{
}

void PageServer::Serve(const std::shared_ptr<Desk>& desk, HttpServer& server)
{
    desk_ = desk;
    server_ = &server;
}

void PageServer::OnRequest(HttpRequest request, PendingAnswerPtr answer)
{
    if (request.isPost) {
        PostUpload(std::move(request), std::move(answer));
    } else if (request.url.path.front() != "documents") {
        answer->Give(FileAnswer(request.url));
    } else if (!PostContent(request.url, answer)) {
        answer->Give({.status = 404});
    }
}

HttpAnswer PageServer::FileAnswer(const Url& url) const
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
    return folder == "panel" ? PanelResource(url) : HttpAnswer{.status = 404};
}

// Style sheets and images. `common` is the host's part of them, and comes from the client's folder.
HttpAnswer PageServer::PanelResource(const Url& url) const
{
    const std::string_view type = ContentTypeOf(url.path.back());
    if (url.path.size() < 2 || (type != kStyleType && !type.starts_with("image/"))) {
        return {.status = 404};
    }
    std::optional<std::string> bytes;
    if (url.path[1] == "common") {
        bytes = ReadServedFile(folders_.client, Below(url, 1));
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

void PageServer::PostUpload(HttpRequest request, PendingAnswerPtr answer)
{
    const auto held = std::make_shared<HttpRequest>(std::move(request));
    loop_.Post([desk = desk_, held, answer = std::move(answer)] {
        if (const auto living = desk.lock()) {
            living->OpenUpload(QueryText(held->url, "name"), QueryText(held->url, "password"),
                               std::move(held->body), answer);
        }
    });
}

bool PageServer::PostContent(const Url& url, const PendingAnswerPtr& answer)
{
    if (url.path.size() != 3 || (url.path[2] != "content" && url.path[2] != "download")) {
        return false;
    }
    loop_.Post([desk = desk_, number = NumberIn(url.path[1]),
                asDownload = url.path[2] == "download", answer] {
        if (const auto living = desk.lock()) {
            living->GiveContent(number, asDownload, answer);
        }
    });
    return true;
}

void PageServer::OnSocketOpened(SocketNumber socket)
{
    loop_.Post([desk = desk_, socket] {
        if (const auto living = desk.lock()) {
            living->Connect(socket);
        }
    });
}

void PageServer::OnSocketMessage(SocketNumber socket, std::string text, bool isWhole)
{
    loop_.Post([desk = desk_, server = server_, socket, text = std::move(text), isWhole] {
        if (const auto living = desk.lock()) {
            if (isWhole) {
                living->Receive(socket, text);
            } else {
                living->RefuseBeginning(socket, text);
            }
            server->TakeNext(socket);
        }
    });
}

void PageServer::OnSocketClosed(SocketNumber socket)
{
    loop_.Post([desk = desk_, socket] {
        if (const auto living = desk.lock()) {
            living->Disconnect(socket);
        }
    });
}

}  // namespace Workbench
