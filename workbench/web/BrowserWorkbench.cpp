#include "web/BrowserWorkbench.h"

#include "web/FileCopies.h"
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
      session_(options_.request.session),
      workers_(TheHost().State().loop),
      pages_(TheHost().State().loop, options_.folders)
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
    struct Opened {
        std::string name;
        std::optional<fs::path> path;
        std::shared_ptr<Documents::Document> content;
        std::optional<FileStamp> stamp{};
    };
    std::vector<Opened> documents;
    for (const std::string& file : options_.request.files) {
        const fs::path path = fs::absolute(file).lexically_normal();
        const std::optional<FileStamp> stamp = StampOf(path);
        documents.push_back(
            {path.filename().string(), path, session_.ReadFile(file).content, stamp});
    }
    for (const std::string& description : options_.request.memoryDocuments) {
        NamedDocument document = session_.MakeMemoryDocument(description);
        documents.push_back({document.name, std::nullopt, document.content});
    }
    if (documents.empty()) {
        documents.push_back(
            {kSampleName, std::nullopt, OpenSample(options_.request.session.listAll)});
    }
    session_.Start({});
    // Takes the port before lists are rendered, so that one that is taken is told of at once.
    HttpServerOptions server = options_.server;
    server.port = options_.request.port;
    server_ = std::make_unique<HttpServer>(server, pages_);
    desk_ =
        std::make_shared<Desk>(TheHost(), workers_, options_.request.session.listAll,
                               [this](SocketNumber page, std::shared_ptr<const std::string> text) {
                                   server_->Send(page, std::move(text));
                               });
    for (Opened& document : documents) {
        desk_->Add(std::move(document.name), std::move(document.path), std::move(document.content),
                   document.stamp);
    }
    pages_.Serve(desk_, *server_);
    server_->Start();
}

bool BrowserWorkbench::TakeSignal(int signal) noexcept
{
    if (ending_ == Ending::kNow) {
        return false;
    }
    Ending none = Ending::kNo;
    if (signal != SIGINT || !ending_.compare_exchange_strong(none, Ending::kWanted)) {
        ending_ = Ending::kNow;
    }
    return true;
}

// A signal may come in between: what it wants then stands.
void BrowserWorkbench::FollowEnding(std::ostream& errors)
{
    Ending state = ending_;
    if (state == Ending::kWanted) {
        const bool asks = desk_->AskBeforeEnding(options_.endPatience);
        if (asks) {
            errors << "workbench: there are unsaved changes; the browser asks what becomes of them "
                      "(Ctrl-C once more ends at once, with recovery copies)"
                   << std::endl;
        }
        ending_.compare_exchange_strong(state, asks ? Ending::kAsked : Ending::kNow);
    } else if (const EndQuestion question = desk_->QuestionOfEnding();
               state == Ending::kAsked && question != EndQuestion::kStands) {
        ending_.compare_exchange_strong(state, question == EndQuestion::kTakenBack ? Ending::kNo
                                                                                   : Ending::kNow);
    }
}

void BrowserWorkbench::Run(std::ostream& errors, const std::function<bool()>& isDone)
{
    // The loop asks before each call, and so the pages are told after each.
    const auto update = [&] {
        desk_->Update();
        FollowEnding(errors);
        return ending_ == Ending::kNow || (isDone && isDone());
    };
    TheHost().State().loop.RunUntil(update, std::chrono::steady_clock::time_point::max());
}

std::vector<std::string> BrowserWorkbench::WriteRecoveryCopies()
{
    std::vector<std::string> lines;
    for (const auto& document : desk_->OpenDocuments()) {
        if (!document->content->Modified() || desk_->DiscardsChanges()) {
            continue;
        }
        const RecoveryCopy copy = WriteRecoveryCopy(*document->content, document->name,
                                                    document->path, options_.recoveryFolders);
        lines.push_back(copy.error.empty()
                            ? document->name + " was not saved; a copy of it as it was is " +
                                  copy.file.string()
                            : copy.error);
    }
    return lines;
}

void BrowserWorkbench::Finish(std::ostream& errors)
{
    if (std::exchange(finished_, true)) {
        return;
    }
    // Files that are being written are finished first.
    workers_.Stop();
    for (const std::string& line : WriteRecoveryCopies()) {
        errors << "workbench: " << line << std::endl;
        desk_->Notify(line);
    }
    desk_->SayGoodbye();
    server_->Stop();
    desk_.reset();
    session_.Finish();
}

int RunInBrowser(const BrowserRequest& request, std::ostream& output, std::ostream& errors)
{
    BrowserWorkbench workbench({.request = request, .recoveryFolders = RecoveryFolders()});
    const StopSignals signals([&](int signal) { return workbench.TakeSignal(signal); });
    for (const auto& document : workbench.TheDesk().OpenDocuments()) {
        for (const std::string& warning : document->content->Warnings()) {
            errors << "warning: " << warning << std::endl;
        }
    }
    output << workbench.Address() << std::endl;
    workbench.Run(errors);
    workbench.Finish(errors);
    return kExitDone;
}

}  // namespace Workbench
