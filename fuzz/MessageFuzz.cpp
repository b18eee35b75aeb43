// Any text as the messages of a browser client, one on each line: every command gets one reply,
// whatever is sent is JSON, and the lists end equal to fresh renderings.
//
// So that inputs have effects, the numbers of elements are positions in the panel's tree, and
// document 1 is the one that is open.

#include "FuzzTarget.h"
#include "driver/Session.h"
#include "web/BrowserSession.h"
#include "web/PanelWriter.h"

#include <nlohmann/json.hpp>

#include <set>
#include <utility>

namespace {

using namespace Workbench;
using Json = nlohmann::json;

constexpr std::size_t kMostMessages = 30;
constexpr SocketNumber kClient = 1;

// One session for all inputs.
class Desk {
public:
    Desk() : session_(SessionOptions{}, 1), workers_(Loop())
    {
        session_.Start({});
        browser_ = std::make_shared<BrowserSession>(
            session_.TheHost(), session_.Documents(), workers_, BrowserSessionOptions{},
            [this](SocketNumber, const std::shared_ptr<const std::string>& text) { Take(*text); });
        browser_->Connect(kClient);
    }
    ~Desk() { workers_.Stop(); }
    Desk(const Desk&) = delete;
    Desk& operator=(const Desk&) = delete;

    void Begin()
    {
        number_ = browser_->Open(MakeMemoryDocument("5:3", false)).number;
        Settle();
    }

    void Receive(const std::string& line)
    {
        Json message = Json::parse(line, nullptr, false);
        if (!message.is_object()) {
            browser_->Receive(kClient, line);
            return;
        }
        static const std::set<Json> files{"open", "save", "save-as", "save-copy"};
        if (files.contains(message["name"])) {
            return;
        }
        if (message["document"] == 1) {
            message["document"] = number_;
        }
        for (const char* name : {"element", "item"}) {
            if (message[name].is_number_unsigned()) {
                message[name] = ElementId(message[name].get<std::uint64_t>());
            }
        }
        const bool isCommand = message["type"] == "command" && message["id"].is_number_unsigned() &&
                               message["id"].get<std::uint64_t>() <= std::uint64_t{1} << 53;
        awaited_ += isCommand ? 1 : 0;
        browser_->Receive(kClient, message.dump(-1, ' ', false, Json::error_handler_t::replace));
        Settle();
    }

    // What is wrong; the session is as it was before the input then.
    std::string End()
    {
        session_.TheHost().ForceReadOnly({});
        browser_->SwitchLanguage("en");
        Settle();
        const Json check = session_.CheckConsistency();
        while (!session_.Documents().All().empty()) {
            browser_->Close(*session_.Documents().All().back());
        }
        Settle();
        const int missing = std::exchange(awaited_, 0);
        return check["consistent"] != true ? check.dump()
               : missing != 0              ? std::to_string(missing) + " replies are missing"
                                           : "";
    }

private:
    UiThreadLoop& Loop() { return session_.TheHost().State().loop; }

    void Take(const std::string& text)
    {
        const Json message = Json::parse(text);
        awaited_ -= message["type"] == "reply" ? 1 : 0;
    }

    void Settle()
    {
        browser_->Update();
        session_.AwaitIdle();
        browser_->Update();
    }

    std::uint64_t ElementId(std::uint64_t position)
    {
        const HtmlEngine::Document& panel = *session_.TheHost().Panel().Document();
        std::vector<std::uint64_t> ids;
        panel.SelectAll(panel.Root(), "*", [&](HtmlEngine::ElementHandle element) {
            ids.push_back(IdOf(panel.NodeOf(element)));
            return true;
        });
        return position < ids.size() ? ids[position] : position;
    }

    Session session_;
    WorkerThreads workers_;
    std::shared_ptr<BrowserSession> browser_;
    DocumentNumber number_ = 0;
    int awaited_ = 0;
};

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static Desk desk;
    const std::string_view input = TextOf(data, size);
    InputReader reader(input);
    try {
        desk.Begin();
        for (std::size_t count = 0; count < kMostMessages && !reader.IsAtEnd(); ++count) {
            desk.Receive(reader.TextUntil('\n'));
        }
        const std::string fault = desk.End();
        if (!fault.empty() && input.find("</") == input.npos) {
            EndWithFault(fault, input);
        }
    } catch (const std::exception& failure) {
        EndWithFault(failure.what(), input);
    }
    return 0;
}
