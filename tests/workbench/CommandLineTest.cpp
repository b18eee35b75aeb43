#include "driver/CommandLine.h"
#include "actions/ActionRefused.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#if defined(__linux__)
#include <sys/resource.h>
#include <unistd.h>
#endif

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace {

using ::testing::HasSubstr;

struct ProgramResult {
    int status;
    std::string output;
    std::string errors;
};

ProgramResult RunWith(std::vector<const char*> arguments, const Workbench::Browse& browse = {})
{
    arguments.insert(arguments.begin(), "workbench");
    std::istringstream input;
    std::ostringstream output;
    std::ostringstream errors;
    const int status = Workbench::RunProgram(static_cast<int>(arguments.size()), arguments.data(),
                                             input, output, errors, browse);
    return {status, output.str(), errors.str()};
}

// What a bad call of the program does: its status, one line of error, nothing on the output.
TEST(CommandLine, EndsBadCallsWithOneLineAndItsStatus)
{
    struct Row {
        std::vector<const char*> arguments;
        int status;
        const char* message;
    };
    const Row rows[] = {
        {{}, Workbench::kExitFailed, "browser"},
        {{"a.pdf"}, Workbench::kExitFailed, "browser"},
        {{"--json"}, Workbench::kExitFailed, "no file"},
        {{"--json", "--text", "a.pdf"}, Workbench::kExitFailed, "--text"},
        {{"--script", "-", "--json", "a.pdf"}, Workbench::kExitFailed, "--script"},
        {{"--script", "-"}, Workbench::kExitFailed, "no file"},
        {{"--script", "no-such-script", "--memory", "0:1"},
         Workbench::kExitFailed,
         "no-such-script"},
        {{"--json", "--nonsense", "a.pdf"}, Workbench::kExitFailed, "nonsense"},
        {{"--json", "no-such-file.pdf"}, Workbench::kExitNoDocument, "no-such-file.pdf"},
        {{"--text", "--memory", "x"}, Workbench::kExitNoDocument, "\"x\""},
        {{"--text", "--memory", "5:0"}, Workbench::kExitNoDocument, "\"5:0\""},
        {{"--json", "--memory", "5:1", "--locale", "xx"}, Workbench::kExitFailed, "\"xx\""},
        {{"--json", "--memory", "5:1", "--module", "no-such-module"},
         Workbench::kExitFailed,
         "no-such-module"},
    };
    for (const Row& row : rows) {
        const ProgramResult result = RunWith(row.arguments);
        EXPECT_EQ(result.status, row.status);
        EXPECT_EQ(result.output, "");
        EXPECT_THAT(result.errors, HasSubstr(row.message));
        EXPECT_EQ(result.errors.find('\n'), result.errors.size() - 1) << result.errors;
    }
}

// An output that takes nothing.
class FullBuffer final : public std::streambuf {};

const std::vector<const char*> kPrintingModes[] = {{"--json"}, {"--text"}, {"--script", "-"}};

int PrintList(std::vector<const char*> arguments, std::ostream& output, std::ostream& errors)
{
    std::istringstream input("dump");
    arguments.insert(arguments.begin(), "workbench");
    arguments.insert(arguments.end(), {"--memory", "3000:30"});
    return Workbench::RunProgram(static_cast<int>(arguments.size()), arguments.data(), input,
                                 output, errors);
}

TEST(CommandLine, TellsWhenItsOutputTakesNothing)
{
    for (const auto& mode : kPrintingModes) {
        FullBuffer full;
        std::ostream output(&full);
        std::ostringstream errors;
        EXPECT_EQ(PrintList(mode, output, errors), Workbench::kExitFailed) << mode[0];
        EXPECT_THAT(errors.str(), HasSubstr("output cannot be written")) << mode[0];
    }
}

#if defined(__linux__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
void LimitMemoryTo(std::size_t more)
{
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const rlim_t bytes = pages * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE)) + more;
    const rlimit limit{bytes, bytes};
    ::setrlimit(RLIMIT_AS, &limit);
}

// Wherever memory runs out, a list is printed whole, or one line says that it is not.
TEST(CommandLine, TellsWhenMemoryRunsOut)
{
    for (const auto& mode : kPrintingModes) {
        std::ostringstream whole;
        ASSERT_EQ(PrintList(mode, whole, std::cerr), Workbench::kExitDone);
        const auto prints = [&](std::size_t memory) {
            LimitMemoryTo(memory);
            std::ostringstream output;
            std::ostringstream errors;
            const int status = PrintList(mode, output, errors);
            return status == 0 ? output.str().size() == whole.str().size()
                               : errors.str().starts_with("workbench: ") && output.str().empty();
        };
        for (std::size_t megabytes = 34; megabytes < 64; megabytes += 2) {
            EXPECT_EXIT(std::_Exit(prints(megabytes << 20) ? 0 : 9), testing::ExitedWithCode(0), "")
                << mode[0] << " with " << megabytes << " MiB";
        }
    }
}
#endif

// The whole way: module loaded, panel driven, lists rendered, tree read, everything let go again.
TEST(CommandLine, ListsDocumentsInTheLanguageAskedFor)
{
    for (int run = 0; run < 2; ++run) {  // a program may start the panel again
        const ProgramResult result = RunWith(
            {"--json", "--memory", "7:3", "--memory", "0:1", "--memory", "4:4", "--locale", "de"});
        ASSERT_EQ(result.status, Workbench::kExitDone) << result.errors;
        EXPECT_EQ(result.errors, "");
        const auto views = nlohmann::json::parse(result.output).at("views");
        ASSERT_EQ(views.size(), 3u);
        std::vector<std::size_t> itemsOnPages;
        for (const auto& page : views[0].at("pages")) {
            itemsOnPages.push_back(page.at("items").size());
        }
        EXPECT_THAT(itemsOnPages, ::testing::ElementsAre(3, 2, 2));
        EXPECT_EQ(views[0].at("file"), "memory:7:3");
        EXPECT_EQ(views[0].at("pages")[2].at("caption"), "Seite 3");
        EXPECT_EQ(views[0].at("noItems"), nullptr);
        EXPECT_EQ(views[1].at("noItems"), "Es sind keine Elemente vorhanden");
        EXPECT_EQ(views[1].at("pages"), nlohmann::json::array());
        for (std::size_t i = 0; i < views.size(); ++i) {
            EXPECT_EQ(views[i].at("visible"), i == 2) << "the view opened last is active";
            EXPECT_EQ(views[i].at("loading"), false);
        }
    }
    const ProgramResult text = RunWith({"--text", "--memory", "2:2"});
    EXPECT_EQ(text.status, Workbench::kExitDone);
    EXPECT_THAT(text.output, HasSubstr("Page 2\n     1_0"));
}

TEST(CommandLine, ShowsInTheBrowserWhatItIsNotToldToPrint)
{
    Workbench::BrowserRequest shown;
    const auto browse = [&](const Workbench::BrowserRequest& request, std::ostream& output,
                            std::ostream&) {
        shown = request;
        output << "address";
        return 7;
    };
    const ProgramResult result =
        RunWith({"a.pdf", "b.pdf", "--memory", "5:1", "--port", "8080", "--locale", "de"}, browse);
    EXPECT_EQ(result.status, 7);
    EXPECT_EQ(result.output, "address");
    EXPECT_THAT(shown.files, ::testing::ElementsAre("a.pdf", "b.pdf"));
    EXPECT_THAT(shown.memoryDocuments, ::testing::ElementsAre("5:1"));
    EXPECT_EQ(shown.port, 8080);
    EXPECT_EQ(shown.session.host.language, "de");
    EXPECT_EQ(RunWith({}, browse).status, 7) << "no file at all: the sample";

    const auto fail = [](const auto&, auto&, auto&) -> int {
        throw Workbench::ActionRefused("a.pdf: missing");
    };
    EXPECT_EQ(RunWith({"a.pdf"}, fail).status, Workbench::kExitNoDocument);
    EXPECT_EQ(RunWith({"--port", "65536"}, browse).status, Workbench::kExitFailed);
}

}  // namespace
