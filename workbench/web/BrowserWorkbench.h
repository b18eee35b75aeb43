// The complete workbench for the browser: documents, panel, session and server, from start to
// shut-down. It lives on the thread that creates it, which becomes the UI thread.
#pragma once

#include "driver/CommandLine.h"
#include "driver/Session.h"
#include "web/BrowserSession.h"
#include "web/HttpServer.h"
#include "web/RequestRouter.h"
#include "web/WorkerThreads.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

namespace Workbench {

struct BrowserOptions {
    BrowserRequest request;
    HttpServerOptions server{};  // the port comes from `request`
    ServedFolders folders = DefaultServedFolders();
    RecoveryOptions recovery{};
    // How long the save-before-exit prompt stays open.
    std::chrono::milliseconds endPatience = std::chrono::seconds(60);
};

class BrowserWorkbench {
public:
    // Reads the documents (the sample document when none is named), starts the panel, opens the
    // documents and starts the server. Throws ActionRefused and std::runtime_error.
    explicit BrowserWorkbench(BrowserOptions options);
    ~BrowserWorkbench();
    BrowserWorkbench(const BrowserWorkbench&) = delete;
    BrowserWorkbench& operator=(const BrowserWorkbench&) = delete;

    const std::string& Address() const noexcept { return server_->Address(); }

    // Serves until Stop is called, a signal or a user ends it, or `isDone` returns true. Writes one
    // line to `errors` whenever the save-before-exit prompt opens, and for each recovery copy that
    // is found or cannot be written.
    void Run(std::ostream& errors, const std::function<bool()>& isDone = {});

    // Makes Run return soon. [any-thread]
    void Stop() noexcept { exit_ = Exit::kNow; }

    // SIGINT opens the save-before-exit prompt when there are unsaved changes and connected
    // clients; a second one, or another signal, makes Run return soon. Returns false on the third
    // signal; the process then exits. [any-thread]
    bool TakeSignal(int signal) noexcept;

    // Writes recovery copies of modified documents, unless a user chose to discard the changes;
    // sends the clients `goodbye`; shuts down server and panel. Writes one line to `errors` for
    // each copy and for each document that could not be copied. Throws std::runtime_error when the
    // panel leaked service objects. A second call does nothing.
    void Finish(std::ostream& errors);

    Host& TheHost() noexcept { return session_.TheHost(); }
    Session& TheSession() noexcept { return session_; }
    BrowserSession& TheBrowserSession() noexcept { return *browser_; }

private:
    enum class Exit : std::uint8_t {
        kNo,
        kRequested,  // the prompt has not been opened yet
        kPrompted,
        kNow,
    };

    void OpenDocuments();
    void UpdateClients();
    void FollowExit(std::ostream& errors);

    const BrowserOptions options_;
    Session session_;
    WorkerThreads workers_;
    RequestRouter router_;
    std::unique_ptr<HttpServer> server_;
    std::shared_ptr<BrowserSession> browser_;
    std::atomic<Exit> exit_ = Exit::kNo;
    bool finished_ = false;
};

// Runs the workbench until the user ends it: prints the address on `output`, and problems of files
// and the paths of recovery copies on `errors`. Returns the program's exit status. Throws as
// BrowserWorkbench does.
int RunInBrowser(const BrowserRequest& request, std::ostream& output, std::ostream& errors);

}  // namespace Workbench
