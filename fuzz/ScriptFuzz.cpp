// Any text as a script of the workbench, on documents in memory: each step is carried out or
// refused by a text, and every list ends equal to a fresh rendering.

#include "FuzzTarget.h"
#include "actions/ActionRefused.h"
#include "driver/Script.h"

#include <nlohmann/json.hpp>

#include <exception>
#include <sstream>

namespace {

using namespace Workbench;

constexpr std::size_t kMostSteps = 40;

// Steps that read or write files are left out, and so are documents that take long.
bool IsHarmless(const std::string& line)
{
    try {
        const std::vector<std::string> words = SplitWords(line);
        return words.size() < 2 || (words[0] != "save" && words[0] != "open") ||
               words[1] == "memory:3:2" || words[1] == "memory:0:1";
    } catch (const StepError&) {
        return true;
    }
}

// One host for all scripts.
class Workshop {
public:
    Workshop() : session_(SessionOptions{}) { session_.Start({}); }

    void Begin() { session_.Documents().Open(session_.Read("memory:5:3")); }

    void Run(const std::string& line)
    {
        std::istringstream steps(line);
        std::ostringstream output;
        std::ostringstream errors;
        try {
            RunScript(session_, steps, output, errors);
        } catch (const StepError&) {
        }
    }

    // Whether every list is as it must be; the host is as it was before the script then.
    std::string End()
    {
        for (const char* step : {"hold off", "fire ui", "interaction-lock off", "locale en"}) {
            Run(step);
        }
        Host& host = session_.TheHost();
        host.ForceReadOnly({});
        host.ForceDeletionPermitted({});
        session_.AwaitIdle();
        const nlohmann::ordered_json check = session_.CheckConsistency();
        while (!session_.Documents().All().empty()) {
            session_.Documents().Close(*session_.Documents().All().back());
        }
        session_.AwaitIdle();
        host.State().calls.Take();
        session_.TakeFailures();
        return check["consistent"] == true ? "" : check.dump();
    }

private:
    Session session_;
};

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static Workshop workshop;
    const std::string_view input = TextOf(data, size);
    InputReader reader(input);
    try {
        workshop.Begin();
        for (std::size_t step = 0; step < kMostSteps && !reader.IsAtEnd(); ++step) {
            if (const std::string line = reader.TextUntil('\n'); IsHarmless(line)) {
                workshop.Run(line);
            }
        }
        const std::string difference = workshop.End();
        // A text that spells out the end of its own item is kept as it was put in.
        if (!difference.empty() && input.find("</") == input.npos) {
            EndWithFault(difference, input);
        }
    } catch (const std::exception& failure) {
        EndWithFault(failure.what(), input);
    }
    return 0;
}
