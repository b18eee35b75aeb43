#include "web/BrowserWorkbench.h"

#include "driver/MemoryReserve.h"
#include "web/SampleFile.h"
#include "web/StopSignals.h"

#include <chrono>
#include <csignal>
#include <ostream>
#include <utility>

namespace Workbench {

namespace fs = std::filesystem;

BrowserWorkbench::BrowserWorkbench(BrowserOptions options)
    : options_(std::move(options)),
      session_(options_.request.session, 1),
      workers_(TheHost().State().loop),
      router_(TheHost().State().loop,
              {options_.folders.client, options_.folders.pdfjs, options_.folders.artwork,
               options_.request.session.host.locales})
{
    OpenDocuments();
}

BrowserWorkbench::~BrowserWorkbench()
{
    if (server_ != nullptr) {
        server_->Stop();
    }
    workers_.Stop();
}

void BrowserWorkbench::OpenDocuments()
{
    const SessionOptions& session = options_.request.session;
    std::vector<DocumentFile> documents;
    for (const std::string& file : options_.request.files) {
        documents.push_back(ReadDocument(file, {session.password, session.listAll}));
    }
    for (const std::string& description : options_.request.memoryDocuments) {
        documents.push_back(MakeMemoryDocument(description, session.listAll));
    }
    if (documents.empty()) {
        documents.push_back({kSampleName, OpenSample(session.listAll)});
    }
    session_.Start({});
    // Binds the port before lists are rendered, so that a port in use is reported at once.
    HttpServerOptions server = options_.server;
    server.port = options_.request.port;
    server_ = std::make_unique<HttpServer>(server, router_);
    browser_ = std::make_shared<BrowserSession>(
        TheHost(), session_.Documents(), workers_,
        BrowserSessionOptions{session.listAll, server.mostMessageBytes, options_.recovery},
        [this](SocketNumber client, std::shared_ptr<const std::string> text) {
            server_->Send(client, std::move(text));
        });
    for (DocumentFile& document : documents) {
        browser_->Open(std::move(document));
    }
    router_.Serve(browser_, *server_);
    server_->Start();
}

bool BrowserWorkbench::TakeSignal(int signal) noexcept
{
    if (exit_ == Exit::kNow) {
        return false;
    }
    Exit none = Exit::kNo;
    if (signal != SIGINT || !exit_.compare_exchange_strong(none, Exit::kRequested)) {
        exit_ = Exit::kNow;
    }
    return true;
}

// A signal that arrives in between takes precedence.
void BrowserWorkbench::FollowExit(std::ostream& errors)
{
    Exit state = exit_;
    if (state == Exit::kRequested) {
        const bool asks = browser_->Prompt().Open(options_.endPatience);
        if (asks) {
            errors << "workbench: there are unsaved changes; the browser asks what becomes of them "
                      "(Ctrl-C once more ends at once, with recovery copies)"
                   << std::endl;
        }
        exit_.compare_exchange_strong(state, asks ? Exit::kPrompted : Exit::kNow);
    } else if (state == Exit::kPrompted) {
        const SavePromptState prompt = browser_->Prompt().State();
        if (prompt != SavePromptState::kOpen) {
            exit_.compare_exchange_strong(
                state, prompt == SavePromptState::kWithdrawn ? Exit::kNo : Exit::kNow);
        }
    }
}

// Clients that may have missed a change, for lack of memory, connect again and are told everything.
void BrowserWorkbench::UpdateClients()
{
    MemoryReserve::Refill();
    try {
        browser_->Update();
    } catch (const std::exception&) {
        for (const SocketNumber client : browser_->Clients().All()) {
            server_->CloseSocket(client);
        }
    }
}

void BrowserWorkbench::Run(std::ostream& errors, const std::function<bool()>& isDone)
{
    // The loop evaluates this before each call, so clients are updated after each call.
    const auto update = [&] {
        UpdateClients();
        for (const std::string& line : browser_->Recovery().TakeLines()) {
            errors << "workbench: " << line << std::endl;
        }
        FollowExit(errors);
        return exit_ == Exit::kNow || (isDone && isDone());
    };
    TheHost().State().loop.RunUntil(update, std::chrono::steady_clock::time_point::max());
}

void BrowserWorkbench::Finish(std::ostream& errors)
{
    if (std::exchange(finished_, true)) {
        return;
    }
    // Completes the files that are being written.
    workers_.Stop([&] {
        errors
            << "workbench: waits for files that are being read or written (Ctrl-C once more ends "
               "without them)"
            << std::endl;
    });
    const bool discards = browser_->Prompt().DiscardsChanges();
    for (const std::string& line : browser_->Recovery().Finish(discards)) {
        errors << "workbench: " << line << std::endl;
        browser_->Clients().Notify(line);
    }
    browser_->SayGoodbye();
    server_->Stop();
    browser_.reset();
    session_.Finish();
}

int RunInBrowser(const BrowserRequest& request, std::ostream& output, std::ostream& errors)
{
    BrowserWorkbench workbench({.request = request, .recovery = {.folders = RecoveryFolders()}});
    const StopSignals signals([&](int signal) { return workbench.TakeSignal(signal); });
    for (const std::string& warning : workbench.TheSession().Documents().TakeWarnings()) {
        errors << "warning: " << warning << std::endl;
    }
    output << workbench.Address() << std::endl;
    workbench.Run(errors);
    workbench.Finish(errors);
    return kExitDone;
}

}  // namespace Workbench
