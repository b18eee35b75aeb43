#include "RunningWorkbench.h"

#include "SampleDocument.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <utility>

namespace WebTests {

using Workbench::BrowserWorkbench;

TemporaryFolder::TemporaryFolder()
{
    std::string name = (std::filesystem::temp_directory_path() / "web-test.XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("there is no place for temporary files");
    }
    path_ = name;
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

void TemporaryFolder::AddFile(const std::string& name, const std::string& bytes) const
{
    std::ofstream(At(name), std::ios::binary) << bytes;
}

std::string TemporaryFolder::AddSample(const std::string& name) const
{
    static const std::string sample = MakeDocument::SampleDocumentBytes();
    AddFile(name, sample);
    return At(name).string();
}

RunningWorkbench::RunningWorkbench(std::vector<std::string> files,
                                   std::vector<std::string> memoryDocuments,
                                   Workbench::RecoveryOptions recovery,
                                   std::chrono::milliseconds endPatience)
{
    Workbench::BrowserOptions options;
    options.request.files = std::move(files);
    options.request.memoryDocuments = std::move(memoryDocuments);
    options.recovery = std::move(recovery);
    options.endPatience = endPatience;
    thread_ = std::thread([this, options] { Run(options); });
    try {
        address_ = std::make_unique<ServerAddress>(started_.get_future().get());
    } catch (...) {
        thread_.join();
        throw;
    }
}

RunningWorkbench::~RunningWorkbench()
{
    End();
}

void RunningWorkbench::Run(Workbench::BrowserOptions options)
{
    std::ostringstream errors;
    try {
        BrowserWorkbench workbench(std::move(options));
        workbench_ = &workbench;
        started_.set_value(workbench.Address());
        workbench.Run(errors);
        workbench.Finish(errors);
    } catch (const std::exception& error) {
        if (workbench_ == nullptr) {
            started_.set_exception(std::current_exception());
        } else {
            ADD_FAILURE() << error.what();
        }
    }
    errors_ = errors.str();
}

std::string RunningWorkbench::Wait()
{
    if (thread_.joinable()) {
        thread_.join();
    }
    return errors_;
}

std::string RunningWorkbench::End()
{
    if (thread_.joinable()) {
        workbench_->Stop();
    }
    return Wait();
}

void RunningWorkbench::OnUi(const std::function<void(BrowserWorkbench&)>& work)
{
    std::promise<void> done;
    workbench_->TheHost().State().loop.Post([&] {
        try {
            work(*workbench_);
            done.set_value();
        } catch (...) {
            done.set_exception(std::current_exception());
        }
    });
    done.get_future().get();
}

void RunningWorkbench::Settle(BrowserClient& client)
{
    OnUi([](BrowserWorkbench& workbench) {
        EXPECT_TRUE(workbench.TheHost().RunUntilIdle(std::chrono::seconds(60)));
    });
    client.Fence();
}

std::string RunningWorkbench::PanelText(const TreeCopy& copy)
{
    std::string text;
    OnUi([&](BrowserWorkbench& workbench) {
        text = TreeText(*workbench.TheHost().Panel().Document(), copy);
    });
    return text;
}

}  // namespace WebTests
