// Between the HTTP server and the desk: answers what needs no UI thread by itself (files, panel
// resources), and posts everything else to the UI thread.
#pragma once

#include "services/UiThreadLoop.h"
#include "web/HttpServer.h"

#include <filesystem>
#include <memory>
#include <string>

namespace Workbench {

class Desk;

// Folders that are served. A missing one serves nothing.
struct ServedFolders {
    std::filesystem::path client;  // the page's own files
    std::filesystem::path pdfjs;
};

// The folders as they lie beside the running program.
ServedFolders DefaultServedFolders();

class PageServer final : public HttpListener {
public:
    // `loop` outlives the server.
    PageServer(UiThreadLoop& loop, ServedFolders folders);

    // To be called before requests come, on the UI thread. Held weakly: what comes when the desk is
    // gone is dropped.
    void Serve(const std::shared_ptr<Desk>& desk, HttpServer& server);

    void OnRequest(HttpRequest request, PendingAnswerPtr answer) override;
    void OnSocketOpened(SocketNumber socket) override;
    void OnSocketMessage(SocketNumber socket, std::string text, bool isWhole) override;
    void OnSocketClosed(SocketNumber socket) override;

private:
    HttpAnswer FileAnswer(const Url& url) const;
    HttpAnswer PanelResource(const Url& url) const;
    void PostUpload(HttpRequest request, PendingAnswerPtr answer);
    bool PostContent(const Url& url, const PendingAnswerPtr& answer);

    UiThreadLoop& loop_;
    const ServedFolders folders_;
    std::weak_ptr<Desk> desk_;
    HttpServer* server_ = nullptr;
};

}  // namespace Workbench
