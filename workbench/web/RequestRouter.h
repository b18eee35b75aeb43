// Routes requests and WebSocket messages: answers files and panel resources on the server's thread,
// and posts everything else to the session on the UI thread.
#pragma once

#include "services/UiThreadLoop.h"
#include "web/HttpServer.h"

#include <filesystem>
#include <memory>
#include <string>

namespace Workbench {

class BrowserSession;

// Folders that are served. A missing one serves nothing.
struct ServedFolders {
    std::filesystem::path client;  // the web page's own files
    std::filesystem::path pdfjs;
    std::filesystem::path locales;  // files of languages; served as one answer
};

// The folders as they lie beside the running program.
ServedFolders DefaultServedFolders();

class RequestRouter final : public HttpListener {
public:
    // `loop` outlives the server.
    RequestRouter(UiThreadLoop& loop, ServedFolders folders);

    // To be called before requests come, on the UI thread. Held weakly: what comes when the
    // session has ended is dropped.
    void Serve(const std::shared_ptr<BrowserSession>& session, HttpServer& server);

    void OnRequest(HttpRequest request, PendingAnswerPtr answer) override;
    void OnSocketOpened(SocketNumber socket) override;
    void OnSocketMessage(SocketNumber socket, std::string text) override;
    void OnSocketClosed(SocketNumber socket) override;

private:
    HttpAnswer FileAnswer(const Url& url) const;
    HttpAnswer LocalesAnswer() const;
    HttpAnswer PanelResource(const Url& url) const;
    void PostUpload(HttpRequest request, PendingAnswerPtr answer);
    bool PostContent(const Url& url, const PendingAnswerPtr& answer);

    UiThreadLoop& loop_;
    const ServedFolders folders_;
    std::weak_ptr<BrowserSession> session_;
    HttpServer* server_ = nullptr;
};

}  // namespace Workbench
