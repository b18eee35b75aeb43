#include "driver/Script.h"
#include "driver/CommandLine.h"
#include "driver/ListMarkup.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <sstream>
#include <string>
#include <vector>

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using Json = nlohmann::json;

struct ScriptResult {
    int status;
    std::vector<std::string> output;  // lines; dumps in the short form
    std::string errors;
};

// memory:0:1 0:0_0*,0_1"text" [0 [1.0,2.0,1.0,2.0] 4 "0_1"] for each view: pages with their items,
// * the current one, then what the view shows and has focused. (hidden) and (loading) follow the
// name.
std::string ShortDump(const Json& dump)
{
    std::string text;
    for (const Json& view : dump.at("views")) {
        text += (text.empty() ? "" : " | ") + view.at("file").get<std::string>();
        text += view.at("visible") ? "" : " (hidden)";
        text += view.at("loading") ? " (loading)" : "";
        for (const Json& page : view.at("pages")) {
            text += " " + page.at("index").dump() + ":";
            for (const Json& item : page.at("items")) {
                text += item.at("annotName").get<std::string>() + (item.at("current") ? "*" : "") +
                        (item.at("contents").is_null() ? "" : item.at("contents").dump()) + ",";
            }
            text.pop_back();
        }
        const Json& shown = view.at("view");
        text += " [" + shown.at("page").dump() + " " + shown.at("target").dump() + " " +
                shown.at("mode").dump() + " " + shown.at("focused").dump() + "]";
    }
    return text;
}

ScriptResult RunSteps(const std::string& steps, const std::vector<const char*>& documents)
{
    std::vector<const char*> arguments = {"workbench", "--script", "-"};
    for (const char* document : documents) {
        arguments.insert(arguments.end(), {"--memory", document});
    }
    std::istringstream input(steps);
    std::stringstream output;
    std::ostringstream errors;
    ScriptResult result{};
    result.status = Workbench::RunProgram(static_cast<int>(arguments.size()), arguments.data(),
                                          input, output, errors);
    for (std::string line; std::getline(output, line);) {
        result.output.push_back(line.starts_with("{\"views\"") ? ShortDump(Json::parse(line))
                                                               : line);
    }
    result.errors = errors.str();
    return result;
}

constexpr const char* kConsistent = "{\"consistent\":true}";

TEST(Script, DrivesPanelViewAndDocument)
{
    const std::string shown = "[0 [85.68,749.3538461538462,85.68,749.3538461538462] 4 ";
    for (const char* thread : {"fire ui\n", "fire foreign\r\n"}) {
        const ScriptResult result = RunSteps(thread + std::string(R"(
            # two pages, three comments
            add 0 Text "say \"hi\""
            add 0 Square
            add 1 Ink 'it'\''s' # the last one
            dump
            click li[annot-name] 2
            calls
            key Home
            key Enter
            calls
            focus 1 0
            edit 1 0 other
            dump
            move-page 1 0
            dump
            click #collapse-all
            key Down          # no current item in sight: the list has the keyboard
            key Delete
            remove 1 1
            calls
            dump
            interaction-lock on
            focus 1 0
            key Enter
            focus none
            calls
            insert-page 0
            delete-page 1
            check
            dump)"),
                                             {"0:2"});
        EXPECT_EQ(result.status, Workbench::kExitDone);
        EXPECT_EQ(result.errors, "");
        EXPECT_THAT(
            result.output,
            ElementsAre(
                R"(memory:0:2 0:0_0*"say \"hi\"",0_1 1:1_0"it's" [null null null null])",
                R"([["BLDocumentView.GoTo",0,4,[208.08000000000004,749.3538461538462,)"
                R"(208.08000000000004,749.3538461538462]],)"
                R"(["BLDocumentView.ShowHighlight",true],)"
                R"(["BLDocumentView.FocusAnnotation",0,"0_1"]])",
                R"([["BLDocumentView.GoTo",0,4,[85.68,749.3538461538462,85.68,749.3538461538462]],)"
                R"(["BLDocumentView.ShowHighlight",true],)"
                R"(["BLDocumentView.FocusAnnotation",0,"0_0"]])",
                R"(memory:0:2 0:0_0"say \"hi\"",0_1 1:1_0*"other" )" + shown + R"("1_0"])",
                R"(memory:0:2 0:0_0*"other" 1:1_0"say \"hi\"",1_1 )" + shown + R"("0_0"])",
                R"([["BLDocumentView.EndEditing",1],["BLDocumentView.ClearSelection",0],)"
                R"(["BLDocument.ExecuteCommand","Annot_Delete",0,"0_0"]])",
                R"(memory:0:2 1:1_0*"say \"hi\"" )" + shown + "null]", "[]", kConsistent,
                R"(memory:0:2 1:1_0*"say \"hi\"" )" + shown + "null]"));
    }
}

TEST(Script, EndsAtABadStep)
{
    struct Row {
        const char* step;
        const char* reason;
    };
    const Row rows[] = {
        {"jump", "no step \"jump\""},
        {"click 'li", "' is not closed"},
        {"edit 0 0 \"text", "\" is not closed"},
        {"add 0 Text \\", "nothing follows the \\"},
        {"click", "wrong number of words for click SELECTOR [N]"},
        {"dump now", "wrong number of words for dump"},
        {"focus 1 2 3", "focus PAGE INDEX, or focus none"},
        {"focus all", "none"},
        {"click li 0", "no match 0 of \"li\""},
        {"click li[annot-name] 3", "no match 3 of \"li[annot-name]\", only 2"},
        {"click li[annot-name", "malformed"},
        {"click li x", "\"x\" is no number"},
        {"key Escape", "no key \"Escape\""},
        {"key Down p.none", "no match 1"},
        {"focus 0 2", "no annotation 2 on page 0"},
        {"focus 1 0", "on page 1"},
        {"add 1 Text", "page 1"},
        {"add -1 Text", "\"-1\" is no number"},
        {"edit 0 2 x", "2"},
        {"remove 0 4294967296", "no number"},
        {"insert-page 2", "2"},
        {"delete-page 0", "page"},
        {"move-page 0 1", "1"},
        {"locale xx", "\"xx\""},
        {"readonly yes", "\"yes\" is neither on nor off"},
        {"fire both", "\"both\" is neither"},
        {"open no-such-file.pdf", "no-such-file.pdf"},
        {"open memory:2:0", "\"2:0\""},
        {"activate 1", "no open document 1"},
        {"close 1", "no open document 1"},
        {"save saved.pdf", "memory"},
    };
    for (const Row& row : rows) {
        const ScriptResult result =
            RunSteps("calls\n\n" + std::string(row.step) + "\ncalls\n", {"2:1"});
        EXPECT_EQ(result.status, Workbench::kExitBadStep) << row.step;
        EXPECT_THAT(result.output, ElementsAre("[]")) << row.step;
        EXPECT_THAT(result.errors, StartsWith("workbench: line 3: ")) << row.step;
        EXPECT_THAT(result.errors, HasSubstr(row.reason));
        EXPECT_EQ(result.errors.find('\n'), result.errors.size() - 1) << result.errors;
    }
    // Without a view there is nothing to act on.
    for (const char* step : {"click li", "key Down", "focus none", "add 0 Text", "close 0"}) {
        EXPECT_EQ(RunSteps("close 0\n" + std::string(step), {"2:1"}).status,
                  Workbench::kExitBadStep)
            << step;
    }
}

TEST(Script, KeepsNumbersOfViewsAndGoesOnAfterFailuresOfThePanel)
{
    const ScriptResult result = RunSteps(R"(
        open memory:0:1
        close 1
        add 0 Text a
        permit-delete off
        key Delete
        readonly on
        open memory:0:1
        add 0 Text b
        permit-delete on
        click #delete
        key Delete
        calls
        activate 2
        key Enter  # nothing is current
        activate 3
        key Delete
        calls
        close 4
        dump
        close 3
        dump)",
                                         {"0:1", "0:1", "0:3"});
    EXPECT_EQ(result.status, Workbench::kExitDone);
    EXPECT_THAT(result.errors, StartsWith("warning: line 15: UIHandler::HandleKey"));
    EXPECT_EQ(result.errors.find('\n'), result.errors.size() - 1) << result.errors;
    EXPECT_THAT(
        result.output,
        ElementsAre("[]",
                    R"([["BLDocumentView.EndEditing",1],["BLDocumentView.ClearSelection",0],)"
                    R"(["BLDocument.ExecuteCommand","Annot_Delete",0,"0_0"]])",
                    "memory:0:1 (hidden) [null null null null] | "
                    "memory:0:3 (hidden) [null null null null] | "
                    "memory:0:1 [null null null null]",
                    "memory:0:1 (hidden) [null null null null] | "
                    "memory:0:3 [null null null null]"));
}

// While renderings are held the panel counts as idle; a check leaves them, and everything else, as
// they are.
TEST(Script, HoldsRenderingsAndChecksAroundThem)
{
    const ScriptResult result = RunSteps(R"(
        add 0 Text first
        add 1 Text second
        click li[annot-name] 2
        calls
        hold on
        open memory:0:1
        add 0 Text late
        activate 0
        add 1 Text third
        dump
        check
        calls
        dump
        open memory:0:1
        close 2
        check
        hold off
        check
        dump)",
                                         {"0:2"});
    EXPECT_EQ(result.status, Workbench::kExitDone);
    EXPECT_EQ(result.errors, "");
    const std::string items = R"( 0:0_0*"first" 1:1_0"second",1_1"third" )"
                              R"([1 [85.68,749.3538461538462,85.68,749.3538461538462] 4 "1_0"] | )";
    const std::string held =
        "memory:0:2" + items + "memory:0:1 (hidden) (loading) [null null null null]";
    EXPECT_THAT(result.output, ElementsAre(HasSubstr("GoTo"), held, kConsistent, "[]", held,
                                           kConsistent, kConsistent,
                                           "memory:0:2 (hidden)" + items +
                                               R"(memory:0:1 0:0_0*"late" [null null null null])"));
}

// A document that changes behind the panel's back.
TEST(Script, CheckFindsAListThatItsDocumentHasLeft)
{
    Workbench::Session session({});
    session.Start({session.Read("memory:0:1"), session.Read("memory:3:2")});
    Documents::Document& content = *session.Documents().Require(1).content;
    const auto check = [&] {
        std::istringstream steps("check");
        std::ostringstream output;
        Workbench::RunScript(session, steps, output, output);
        return Json::parse(output.str());
    };
    EXPECT_EQ(check(), Json({{"consistent", true}}));
    ASSERT_TRUE(content.ChangeContents(0, 1, u"\u00FCberholt").Succeeded());
    const Json difference = check();
    EXPECT_EQ(difference.at("consistent"), false);
    EXPECT_EQ(difference.at("view"), 1);
    EXPECT_EQ(difference.at("file"), "memory:3:2");
    EXPECT_THAT(difference.at("fresh").get<std::string>(), StartsWith("<p>\u00FCberholt</p>"));
    EXPECT_THAT(difference.at("panel").get<std::string>(), StartsWith("<p>"));
    ASSERT_TRUE(content.RemoveAnnotation(0, 0).Succeeded());
    EXPECT_EQ(check().at("view"), 1);
    HtmlEngine::Document& document = *session.TheHost().Panel().Document();
    document.Delete(Workbench::FindVisibleContainer(document));
    EXPECT_EQ(check().at("view"), nullptr);
    session.Finish();
}

TEST(ListMarkup, KeepsTheBlanksOfContentsAndLeavesOutThoseOfTemplates)
{
    EXPECT_EQ(Workbench::WithoutIndents(
                  " <ul page-item=\"0\">\r\n  <li>\r\n<p><b>a</b> <i>b</i> </p>\r\n</li></ul> "
                  "<ul page-item=\"1\"></ul>\r\n"),
              "<ul page-item=\"0\"><li><p><b>a</b> <i>b</i> </p></li></ul>"
              "<ul page-item=\"1\"></ul>");
}

}  // namespace
