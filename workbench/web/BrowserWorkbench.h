// The workbench in the browser as a whole, from its documents to the end of its server. It lives on
// the thread that makes it, which becomes the UI thread.
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
    HttpServerOptions server{};  // but for the port
    ServedFolders folders = DefaultServedFolders();
    // Where recovery copies go that cannot stand beside their originals.
    std::vector<std::filesystem::path> recoveryFolders;
    // How long the save-before-exit prompt stays open.
    std::chrono::milliseconds endPatience = std::chrono::seconds(60);
};

class BrowserWorkbench {
public:
    // Reads the documents, the sample where none is named, starts the panel, opens them and begins
    // to serve. Throws ActionRefused and std::runtime_error.
    explicit BrowserWorkbench(BrowserOptions options);
    ~BrowserWorkbench();
    BrowserWorkbench(const BrowserWorkbench&) = delete;
    BrowserWorkbench& operator=(const BrowserWorkbench&) = delete;

    const std::string& Address() const noexcept { return server_->Address(); }

    // Serves until Stop was called, a signal or a user has ended it, or until `isDone` says so. One
    // line on `errors` whenever the save-before-exit prompt opens.
    void Run(std::ostream& errors, const std::function<bool()>& isDone = {});

    // Lets Run return soon. [any-thread]
    void Stop() noexcept { exit_ = Exit::kNow; }

    // SIGINT opens the save-before-exit prompt where there are unsaved changes and clients to ask;
    // a second one, or another signal, lets Run return soon. Returns false on the third signal; the
    // process then exits. [any-thread]
    bool TakeSignal(int signal) noexcept;

    // Writes recovery copies of what is not saved, unless a user wants none, says goodbye to the
    // clients, and ends server and panel. One line on `errors` for each copy, and for what could
    // not be recovered. Throws std::runtime_error when the panel lost service objects. A second
    // call does nothing.
    void Finish(std::ostream& errors);

    Host& TheHost() noexcept { return session_.TheHost(); }
    Session& TheSession() noexcept { return session_; }

private:
    enum class Exit : std::uint8_t {
        kNo,
        kRequested,  // the prompt has not been opened yet
        kPrompted,
        kNow,
    };

    void OpenDocuments();
    void FollowExit(std::ostream& errors);
    std::vector<std::string> WriteRecoveryCopies();

    const BrowserOptions options_;
    Session session_;
    WorkerThreads workers_;
    RequestRouter router_;
    std::unique_ptr<HttpServer> server_;
    std::shared_ptr<BrowserSession> browser_;
    std::atomic<Exit> exit_ = Exit::kNo;
    bool finished_ = false;
};

// Runs the workbench until the user ends it: prints the address on `output`, and on `errors` what
// was amiss with files and where recovery copies are. The program's exit status. Throws as
// BrowserWorkbench does.
int RunInBrowser(const BrowserRequest& request, std::ostream& output, std::ostream& errors);

}  // namespace Workbench
