// Routes requests and WebSocket messages: answers files and panel resources on the network thread,
// and posts everything else to the session on the UI thread.
#pragma once

#include "services/UiThreadLoop.h"
#include "web/HttpServer.h"

#include <filesystem>
#include <memory>
#include <string>

namespace Workbench {

class BrowserSession;

// Folders with the served files. A missing folder serves nothing.
struct ServedFolders {
    std::filesystem::path client;  // the web page's own files
    std::filesystem::path pdfjs;
    std::filesystem::path artwork;  // vector sources of the panel's images
    std::filesystem::path locales;  // one file per language; served as one answer
};

// The folders beside the running program.
ServedFolders DefaultServedFolders();

class RequestRouter final : public HttpListener {
public:
    // `loop` outlives the server.
    RequestRouter(UiThreadLoop& loop, ServedFolders folders);

    // Sets the session, held weakly: requests after its end are dropped. To be called on the UI
    // thread before the server starts.
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
