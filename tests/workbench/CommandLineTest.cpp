#include "driver/CommandLine.h"
#include "actions/ActionRefused.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

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
