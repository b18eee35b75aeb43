// The workbench in the browser on a thread of its own, with files in a temporary folder.
#pragma once

#include "Clients.h"
#include "web/BrowserWorkbench.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace WebTests {

// A folder that is removed with everything in it.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    // A copy of the sample document.
    std::string AddSample(const std::string& name) const;
    void AddFile(const std::string& name, const std::string& bytes) const;
    std::filesystem::path At(const std::string& name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

class RunningWorkbench {
public:
    explicit RunningWorkbench(std::vector<std::string> files,
                              std::vector<std::string> memoryDocuments = {},
                              Workbench::RecoveryOptions recovery = {},
                              std::chrono::milliseconds endPatience = std::chrono::seconds(60));
    // Ends it, if that has not been done.
    ~RunningWorkbench();
    RunningWorkbench(const RunningWorkbench&) = delete;
    RunningWorkbench& operator=(const RunningWorkbench&) = delete;

    const ServerAddress& Address() const { return *address_; }

    // Runs something on the UI thread and waits for it.
    void OnUi(const std::function<void(Workbench::BrowserWorkbench&)>& work);

    // Waits until the panel is idle and the client has received all changes.
    void Settle(BrowserClient& client);

    // The engine's tree in the windows of a copy.
    std::string PanelText(const TreeCopy& copy);

    // As if the process had been sent a signal.
    void Signal(int signal) { EXPECT_TRUE(workbench_->TakeSignal(signal)); }

    // What it says on standard error until it has ended: by itself, or now.
    std::string Wait();
    std::string End();

private:
    void Run(Workbench::BrowserOptions options);

    std::promise<std::string> started_;
    std::unique_ptr<ServerAddress> address_;
    Workbench::BrowserWorkbench* workbench_ = nullptr;
    std::string errors_;
    std::thread thread_;
};

}  // namespace WebTests
