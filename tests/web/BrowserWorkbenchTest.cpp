// Browser clients of a running workbench: messages they receive, commands they send, and the
// effects on documents, files and the panel.
#include "RunningWorkbench.h"
#include "documents/Population.h"
#include "documents/QpdfDocument.h"
#include "service-common/UnicodeText.h"
#include "web/Author.h"
#include "web/CommentSearch.h"
#include "web/DocumentJson.h"
#include "web/RecoveryCopies.h"
#include "web/StopSignals.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFWriter.hh>

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <future>
#include <iterator>
#include <random>

namespace WebTests {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using Workbench::BrowserWorkbench;

std::string ReadFile(const std::filesystem::path& path)
{
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

// The same file, with the password "owner" for those who may do everything, else "user".
std::string Encrypted(const std::string& bytes)
{
    QPDF file;
    file.processMemoryFile("plain", bytes.data(), bytes.size());
    QPDFWriter writer(file);
    writer.setOutputMemory();
    writer.setR6EncryptionParameters("user", "owner", true, true, true, true, true, true,
                                     qpdf_r3p_full, true);
    writer.write();
    const auto buffer = writer.getBufferSharedPointer();
    return {reinterpret_cast<const char*>(buffer->getBuffer()), buffer->getSize()};
}

// Number of annotations on a page of a file.
std::size_t CountIn(const std::string& bytes, std::uint32_t page)
{
    const auto opened = Documents::QpdfDocument::OpenBytes(bytes, "bytes");
    if (opened.document == nullptr) {
        ADD_FAILURE() << opened.message;
        return 0;
    }
    std::uint32_t count = 0;
    Documents::FunctionTable().PageGetAnnotCount(opened.document->AcquirePage(page).Get(), &count);
    return count;
}

class Browsing : public testing::Test {
protected:
    // Starts with copies of the sample under these names.
    void Start(const std::vector<std::string>& names,
               std::chrono::milliseconds endPatience = std::chrono::seconds(60))
    {
        std::vector<std::string> files;
        for (const std::string& name : names) {
            files.push_back(folder.AddSample(name));
        }
        workbench = std::make_unique<RunningWorkbench>(
            files, std::vector<std::string>{},
            Workbench::RecoveryOptions{.folders = {folder.At("state")}}, endPatience);
        client = Connect();
    }
    std::unique_ptr<BrowserClient> Connect()
    {
        auto connected = std::make_unique<BrowserClient>(workbench->Address());
        connected->ReadUntil([](const Json& message) {
            return message.at("type") == "panel" && message.at("remaining") == 0;
        });
        workbench->Settle(*connected);
        return connected;
    }
    void ExpectSameTree(BrowserClient& connected)
    {
        EXPECT_TRUE(connected.tree.Text() == workbench->PanelText(connected.tree));
    }
    std::uint64_t Item(const std::string& name) { return client->tree.Find("annot-name", name); }
    std::string Path(const std::string& name) const { return folder.At(name).string(); }

    // What the workbench says on standard error until it has ended by itself.
    std::string WaitForEnd()
    {
        if (client != nullptr) {
            EXPECT_EQ(client->ReadClose(), 1001u);
        }
        return workbench->Wait();
    }

    // While they are held, no list that is being made lands.
    void HoldLists(bool on)
    {
        workbench->OnUi(
            [on](BrowserWorkbench& running) { running.TheHost().State().loop.Hold(on); });
        if (!on) {
            workbench->Settle(*client);
        }
    }

    // A command that must succeed; what it answers.
    Json Do(const std::string& name, const Json& arguments)
    {
        const Json reply = client->Command(name, arguments);
        EXPECT_EQ(reply.at("error"), nullptr) << name << " " << reply;
        return reply;
    }

    TemporaryFolder folder;
    std::unique_ptr<RunningWorkbench> workbench;
    std::unique_ptr<BrowserClient> client;
};

TEST_F(Browsing, OpensTheSampleWhenNoFileIsNamed)
{
    workbench = std::make_unique<RunningWorkbench>(std::vector<std::string>{});
    BrowserClient newClient(workbench->Address());
    const Json hello = newClient.Read();
    EXPECT_EQ(hello.at("type"), "hello");
    EXPECT_EQ(hello.at("version"), 1);
    EXPECT_EQ(newClient.Read().at("type"), "locale");
    EXPECT_EQ(newClient.Read().at("type"), "documents");
    const Json first = newClient.Read();
    EXPECT_EQ(first.at("type"), "panel");
    EXPECT_EQ(first.at("reset"), true);
    workbench->Settle(newClient);
    const Json document = newClient.Document(1);
    EXPECT_EQ(document.at("name"), "sample.pdf");
    EXPECT_EQ(document.at("path"), nullptr);
    EXPECT_EQ(document.at("busy"), nullptr);
    EXPECT_EQ(newClient.documents.at("active"), 1);
    EXPECT_EQ(Get(workbench->Address(), "/documents/2/content").status, 404);
    const HttpResult content = Get(workbench->Address(), "/documents/1/content?revision=0");
    EXPECT_THAT(content.header, HasSubstr("application/pdf"));
    EXPECT_GT(CountIn(content.body, 0), 0u);
    const HttpResult download = Get(workbench->Address(), "/documents/1/download");
    EXPECT_THAT(download.header, HasSubstr("attachment; filename=\"sample.pdf\""));
    EXPECT_EQ(download.body, content.body);
}

TEST_F(Browsing, FollowsClicksAndKeysOfSeveralClients)
{
    Start({"a.pdf"});
    const auto other = Connect();
    ExpectSameTree(*client);
    ASSERT_NE(Item("0_1"), 0u);
    client->Send({{"type", "click"}, {"element", Item("0_1")}});
    client->Fence();
    EXPECT_EQ(client->tree.StatesOf(Item("0_1")), 32u);
    EXPECT_EQ(client->tree.StatesOf(Item("0_0")), 0u);
    const Json shown = client->Document(1).at("shown");
    EXPECT_EQ(shown.at("page"), 0);
    EXPECT_EQ(shown.at("mode"), 4);
    EXPECT_EQ(client->Document(1).at("focused"), (Json{{"page", 0}, {"index", 1}}));

    client->Send({{"type", "click"}, {"element", Item("0_1")}});
    client->Send({{"type", "key"}, {"key", "Down"}, {"element", nullptr}});
    client->Send({{"type", "key"}, {"key", "Enter"}});
    client->Fence();
    EXPECT_GE(client->Document(1).at("shown").at("count"), shown.at("count").get<int>() + 2)
        << "the same place may be shown again";
    EXPECT_EQ(client->tree.StatesOf(Item("0_1")), 0u);
    EXPECT_THAT(client->others, testing::Contains(testing::ResultOf(
                                    [](const Json& m) { return m.at("type"); }, "scroll")));
    ExpectSameTree(*client);
    other->Fence();
    ExpectSameTree(*other);
    EXPECT_EQ(other->documents, client->documents);

    const std::size_t before = CountIn(Get(workbench->Address(), "/documents/1/content").body, 0);
    client->Send({{"type", "key"}, {"key", "Delete"}});
    client->Fence();
    EXPECT_EQ(client->Document(1).at("modified"), true);
    EXPECT_EQ(client->Document(1).at("undo"), "remove");
    EXPECT_LT(CountIn(Get(workbench->Address(), "/documents/1/content").body, 0), before);
    Do("undo", {{"document", 1}});
    EXPECT_EQ(client->Document(1).at("modified"), false);
    EXPECT_EQ(client->Document(1).at("redo"), "remove");
    ExpectSameTree(*client);
    const auto late = Connect();
    ExpectSameTree(*late);
    EXPECT_EQ(late->documents, client->documents);
}

TEST_F(Browsing, RefusesMalformedMessagesAndContinues)
{
    Start({"a.pdf"});
    const char* const rows[] = {
        "",
        "nonsense",
        "[1]",
        "{}",
        "{\"type\":5}",
        "{\"type\":\"nonsense\"}",
        "{\"type\":\"click\"}",
        "{\"type\":\"click\",\"element\":\"1\"}",
        "{\"type\":\"click\",\"element\":-1}",
        "{\"type\":\"click\",\"element\":1e300}",
        "{\"type\":\"key\",\"key\":\"F1\"}",
        "{\"type\":\"key\",\"key\":\"Up\",\"element\":{}}",
        "{\"type\":\"command\",\"name\":\"save\"}",
        "{\"type\":\"command\",\"id\":null,\"name\":\"save\"}",
    };
    for (const char* const row : rows) {
        client->SendText(row);
        EXPECT_EQ(client->Read().at("type"), "refused") << row;
    }
    client->SendText(std::string(1'000'000, '['));
    EXPECT_EQ(client->Read().at("type"), "refused");
    client->SendBinary("{}");
    EXPECT_EQ(client->Read().at("type"), "refused");
    // Elements that there are not (any more) take no input, and that is no mistake.
    client->Send({{"type", "click"}, {"element", 999'999}});
    client->Send({{"type", "key"}, {"key", "Down"}, {"element", 999'999}});
    client->Fence();
    ExpectSameTree(*client);
}

TEST_F(Browsing, RefusesCommandsWithAReason)
{
    Start({"a.pdf", "b.pdf"});
    folder.AddFile("damaged.pdf", "%PDF-1.7 nothing");
    Do("read-only", {{"document", 2}, {"on", true}});
    const struct {
        const char* name;
        Json arguments;
        const char* error;
        const char* reason;
    } rows[] = {
        {"nonsense", {}, "nonsense", ""},
        {"save", {}, "document", ""},
        {"save", {{"document", 9}}, "no open document 9", "gone"},
        {"save", {{"document", "1"}}, "document", ""},
        {"open", {}, "path", ""},
        {"open", {{"path", ""}}, "path", "path"},
        {"open", {{"path", Path("none.pdf")}}, "none.pdf", ""},
        {"open", {{"path", Path("")}}, "", ""},
        {"open", {{"path", Path("damaged.pdf")}}, "damaged.pdf", "damaged"},
        {"close", {{"document", 1}, {"unsaved", "x"}}, "unsaved", ""},
        {"activate", {{"document", 3}}, "no open document 3", "gone"},
        {"add", {{"document", 1}, {"page", 99}, {"subtype", "Text"}}, "page 99", "gone"},
        {"add", {{"document", 1}, {"page", 0}, {"subtype", ""}}, "subtype", ""},
        {"add",
         {{"document", 1}, {"page", 0}, {"subtype", "Text"}, {"rect", {1, 2, 3}}},
         "rect",
         ""},
        {"add",
         {{"document", 1}, {"page", 0}, {"subtype", "Text"}, {"rect", {5, 2, 3, 4}}},
         "rect",
         ""},
        {"add",
         {{"document", 1}, {"page", 0}, {"subtype", "Highlight"}, {"quads", {1, 2, 3, 4, 5, 6, 7}}},
         "quads",
         ""},
        {"add",
         {{"document", 1}, {"page", 0}, {"subtype", "Ink"}, {"quads", {1, 2, 3, 2, 1, 1, 3, 1}}},
         "quads",
         ""},
        {"edit", {{"document", 1}, {"page", 0}, {"index", 999}, {"contents", "x"}}, "999", "gone"},
        {"edit", {{"document", 1}, {"page", 0}, {"index", 0}}, "contents", ""},
        {"remove", {{"document", 1}, {"page", 0}, {"index", 999}}, "999", "gone"},
        {"insert-page", {{"document", 1}, {"at", 99}}, "99", "gone"},
        {"delete-page", {{"document", 1}, {"page", 99}}, "99", "gone"},
        {"move-page", {{"document", 1}, {"from", 0}, {"to", 99}}, "99", "gone"},
        {"save-as", {{"document", 1}, {"path", Path("b.pdf")}}, "another document", ""},
        {"save-as", {{"document", 1}, {"path", Path("no/such/folder.pdf")}}, "folder", "write"},
        {"save-as", {{"document", 1}, {"path", Path("damaged.pdf")}}, "damaged.pdf", "exists"},
        {"save-copy", {{"document", 1}, {"path", Path("a.pdf")}}, "is open", ""},
        {"save-copy", {{"document", 1}, {"path", Path("damaged.pdf")}}, "damaged.pdf", "exists"},
        {"save-copy", {{"document", 1}, {"path", Path("no/such/folder.pdf")}}, "folder", "write"},
        {"locale", {{"locale", "xx"}}, "xx", ""},
        {"find", {{"document", 1}, {"text", ""}}, "text", ""},
        {"find", {{"document", 1}, {"text", "x"}, {"step", "up"}}, "up", ""},
        {"find", {{"document", 9}, {"text", "x"}}, "no open document 9", "gone"},
        {"focus", {{"document", 1}, {"page", 0}, {"index", 999}}, "999", "gone"},
        {"annotations", {{"document", 1}, {"page", 99}}, "99", "gone"},
        {"add", {{"document", 2}, {"page", 0}, {"subtype", "Text"}}, "read-only", "read-only"},
        {"edit",
         {{"document", 2}, {"page", 0}, {"index", 0}, {"contents", "x"}},
         "read-only",
         "read-only"},
        {"remove", {{"document", 2}, {"page", 0}, {"index", 0}}, "read-only", "read-only"},
        {"insert-page", {{"document", 2}, {"at", 0}}, "read-only", "read-only"},
        {"delete-page", {{"document", 2}, {"page", 0}}, "read-only", "read-only"},
        {"move-page", {{"document", 2}, {"from", 0}, {"to", 1}}, "read-only", "read-only"},
        {"undo", {{"document", 2}}, "read-only", "read-only"},
        {"redo", {{"document", 2}}, "read-only", "read-only"},
    };
    workbench->Settle(*client);
    const Json before = client->documents;
    for (const auto& row : rows) {
        const Json reply =
            client->Command(row.name, row.arguments.is_null() ? Json::object() : row.arguments);
        ASSERT_TRUE(reply.at("error").is_string()) << row.name << " " << row.arguments;
        EXPECT_THAT(reply.at("error").get<std::string>(), HasSubstr(row.error)) << row.arguments;
        EXPECT_EQ(reply.value("reason", ""), row.reason) << row.name << " " << row.arguments;
    }
    workbench->Settle(*client);
    EXPECT_EQ(client->documents, before);
}

// A client may name a revision that another client has changed since.
TEST_F(Browsing, RefusesPositionsOfAnotherRevision)
{
    Start({"a.pdf"});
    Do("insert-page", {{"document", 1}, {"at", 1}});
    const struct {
        const char* name;
        Json arguments;
    } rows[] = {
        {"edit", {{"page", 0}, {"index", 0}, {"contents", "new"}}},
        {"remove", {{"page", 0}, {"index", 0}}},
        {"focus", {{"page", 0}, {"index", 0}}},
        {"insert-page", {{"at", 0}}},
        {"delete-page", {{"page", 1}}},
        {"move-page", {{"from", 1}, {"to", 0}}},
    };
    for (const auto& row : rows) {
        Json arguments = row.arguments;
        workbench->Settle(*client);
        const Json focused = client->Document(1).at("focused");
        const std::uint64_t revision = client->Document(1).at("revision");
        arguments["document"] = 1;
        arguments["revision"] = revision - 1;
        EXPECT_EQ(client->Command(row.name, arguments).value("reason", ""), "changed") << row.name;
        EXPECT_EQ(client->Document(1).at("revision"), revision) << row.name;
        EXPECT_EQ(client->Document(1).at("focused"), focused) << row.name;
        arguments["revision"] = revision;
        Do(row.name, arguments);
    }
}

TEST_F(Browsing, RefusesChangesOfLockedCommentsAndTheLastPage)
{
    Start({"a.pdf"});
    Json locked;
    for (std::uint32_t number = 0; locked.is_null() && number < 7; ++number) {
        const Json list = Do("annotations", {{"document", 1}, {"page", number}});
        for (const Json& annotation : list.at("annotations")) {
            if (annotation.at("locked")) {
                locked = {{"document", 1}, {"page", number}, {"index", annotation.at("index")}};
            }
        }
    }
    ASSERT_TRUE(locked.is_object()) << "the sample has protected ones";
    EXPECT_EQ(client->Command("remove", locked).value("reason", ""), "locked");
    locked["contents"] = "x";
    EXPECT_EQ(client->Command("edit", locked).value("reason", ""), "locked");

    const std::string name = std::to_string(locked.at("page").get<int>()) + "_" +
                             std::to_string(locked.at("index").get<int>());
    client->Send({{"type", "click"}, {"element", Item(name)}});
    client->Send({{"type", "key"}, {"key", "Delete"}});
    client->Fence();
    EXPECT_EQ(client->others.back().value("reason", ""), "locked") << client->others.back();
    EXPECT_THAT(client->others.back().value("text", ""),
                AllOf(HasSubstr("a.pdf"), Not(HasSubstr("UIHandler"))));
    EXPECT_EQ(client->Document(1).at("modified"), false);

    const Json first = {{"document", 1}, {"page", 0}};
    while (client->Document(1).at("pages") > 1) {
        Do("delete-page", first);
    }
    EXPECT_EQ(client->Command("delete-page", first).value("reason", ""), "last-page");
}

// Every edit leaves the highlight where its reader is, and commands act on what is highlighted.
TEST_F(Browsing, KeepsTheCurrentCommentThroughEdits)
{
    workbench = std::make_unique<RunningWorkbench>(std::vector<std::string>{},
                                                   std::vector<std::string>{"0:6"});
    client = Connect();
    const auto current = [&] {
        workbench->Settle(*client);
        const Json place = client->Document(1).at("current");
        if (place.is_null()) {
            return std::string();
        }
        const std::string name = std::to_string(place.at("page").get<int>()) + "_" +
                                 std::to_string(place.at("index").get<int>());
        EXPECT_EQ(client->tree.StatesOf(Item(name)), 32u) << name;
        return name;
    };
    const auto add = [](int number, const char* subtype) {
        return Json{{"page", number}, {"subtype", subtype}, {"contents", "x"}};
    };
    const auto at = [](int number, int index) { return Json{{"page", number}, {"index", index}}; };
    const Json none = Json::object();
    Json edit = at(3, 0);
    edit["contents"] = "y";
    const struct {
        const char* name;
        Json arguments;
        const char* current;
    } rows[] = {
        {"add", add(1, "Text"), "1_0"},
        {"add", add(1, "Text"), "1_1"},
        {"add", add(1, "Link"), "1_1"},  // not listed
        {"add", add(1, "Text"), "1_3"},
        {"add", add(4, "Link"), "1_3"},
        {"add", add(4, "Text"), "4_1"},
        {"add", add(5, "Text"), "5_0"},
        {"focus", at(1, 1), "1_1"},
        {"remove", none, "1_2"},  // the next one of the page
        {"undo", none, "1_1"},
        {"redo", none, "1_2"},
        {"remove", none, "1_0"},  // the one before
        {"remove", at(1, 1), "1_0"},
        {"remove", none, "4_1"},  // that of the nearest page
        {"focus", at(5, 0), "5_0"},
        {"remove", none, "4_1"},
        {"remove", none, ""},
        {"undo", none, "4_1"},
        {"undo", none, "5_0"},
        {"undo", none, "1_0"},
        {"focus", at(5, 0), "5_0"},
        {"insert-page", {{"at", 0}}, "6_0"},
        {"move-page", {{"from", 6}, {"to", 0}}, "0_0"},
        {"edit", edit, "0_0"},
        {"undo", none, "3_0"},
        {"focus", at(0, 0), "0_0"},
        {"delete-page", {{"page", 0}}, "2_0"},
        {"undo", none, "0_0"},
        {"undo", none, "6_0"},
    };
    for (const auto& row : rows) {
        Json arguments = row.arguments;
        arguments["document"] = 1;
        Do(row.name, arguments);
        EXPECT_EQ(current(), row.current) << row.name << " " << row.arguments;
        EXPECT_EQ(client->Command("current", {{"document", 1}}).value("reason", ""),
                  *row.current == '\0' ? "no-comment" : "");
    }
}

// Of two windows neither deletes what its user does not see highlighted, nor while there is no
// list.
TEST_F(Browsing, DeletesOnlyWhatIsHighlighted)
{
    Start({"a.pdf"});
    const auto other = Connect();
    const auto pressDelete = [&](BrowserClient& sender, const Json& item) {
        sender.Send({{"type", "key"}, {"key", "Delete"}, {"item", item}, {"id", 900}});
        return sender
            .ReadUntil([](const Json& message) {
                return message.at("type") == "reply" && message.at("id") == 900;
            })
            .value("reason", "");
    };
    const Json document = {{"document", 1}};
    const std::uint64_t seen = Item("0_0");
    other->Send({{"type", "key"}, {"key", "Down"}});
    other->Fence();
    EXPECT_EQ(pressDelete(*client, seen), "other-comment");
    EXPECT_EQ(client->Command("remove", {{"document", 1}, {"item", seen}}).at("reason"),
              "other-comment");
    const Json current = Do("current", document);
    EXPECT_EQ(current.at("page"), 0);
    EXPECT_EQ(current.at("annotation").at("index"), 1);
    const std::string words = current.at("annotation").at("contents");
    EXPECT_EQ(pressDelete(*client, Item("0_1")), "");
    EXPECT_NE(Do("current", document).at("annotation").at("contents"), words);
    Do("undo", document);
    EXPECT_EQ(Do("current", document).at("annotation").at("contents"), words);

    HoldLists(true);
    Do("insert-page", {{"document", 1}, {"at", 0}});
    EXPECT_EQ(client->Document(1).at("current"), nullptr);
    EXPECT_EQ(pressDelete(*client, nullptr), "listing");
    EXPECT_EQ(client->Command("current", document).at("reason"), "listing");
    Do("remove", {{"document", 1}, {"page", 1}, {"index", 0}});
    Do("undo", document);
    Do("focus", {{"document", 1}, {"page", 1}, {"index", 1}});
    HoldLists(false);
    EXPECT_EQ(Do("current", document).at("annotation").at("contents"), words);
    EXPECT_EQ(client->tree.StatesOf(Item("1_1")), 32u);
    client->Send({{"type", "click"}, {"element", client->tree.Find("class", "icon document")}});
    client->Fence();
    EXPECT_EQ(pressDelete(*client, nullptr), "folded");
    EXPECT_EQ(client->Document(1).at("undo"), "insert-page");
}

TEST_F(Browsing, FindsCommentsInTheOrderOfTheList)
{
    Start({"a.pdf"});
    const auto find = [&](const char* text, const char* step) {
        Json fields = {{"document", 1}, {"text", text}};
        if (*step != 0) {
            fields["step"] = step;
        }
        const Json reply = Do("find", fields);
        return Json{reply.at("number"), reply.at("count"), reply.at("page"), reply.at("index")};
    };
    const auto current = [&]() -> Json {
        const Json document = client->Document(1);
        return {document.at("current").at("page"), document.at("current").at("index")};
    };
    const struct {
        const char* text;
        const char* step;
        Json found;    // number, count, page, index
        Json current;  // afterwards
    } rows[] = {
        {"survey", "", {nullptr, 2, nullptr, nullptr}, {0, 0}},
        {"survey", "here", {1, 2, 0, 1}, {0, 1}},
        {"SURVEY", "here", {1, 2, 0, 1}, {0, 1}},
        {"survey", "next", {2, 2, 0, 5}, {0, 5}},
        {"survey", "next", {1, 2, 0, 1}, {0, 1}},
        {"survey", "previous", {2, 2, 0, 5}, {0, 5}},
        {"rivera", "here", {1, 1, 0, 2}, {0, 2}},  // an author
        {"praise", "next", {1, 1, 0, 0}, {0, 0}},  // a subject
        {"strikeout", "", {nullptr, 0, nullptr, nullptr}, {0, 0}},
        {"strikeout", "next", {nullptr, 0, nullptr, nullptr}, {0, 0}},
        {"<u>", "here", {nullptr, 0, nullptr, nullptr}, {0, 0}},
        {"underlined, x2, h2o", "here", {1, 1, 4, 4}, {4, 4}},
        {"layout", "previous", {6, 6, 1, 5}, {1, 5}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(find(row.text, row.step), row.found) << row.text << " " << row.step;
        EXPECT_EQ(current(), row.current) << row.text << " " << row.step;
    }
    ExpectSameTree(*client);
    Do("edit", {{"document", 1}, {"page", 1}, {"index", 0}, {"contents", "Survey"}});
    EXPECT_EQ(find("survey", "previous"), (Json{3, 3, 1, 0})) << "of the present revision";
    EXPECT_EQ(Do("find", {{"document", 1}, {"text", "survey"}}).at("revision"),
              client->Document(1).at("revision"));

    Do("focus", {{"document", 1}, {"page", 1}, {"index", 3}});
    HoldLists(true);
    Do("insert-page", {{"document", 1}, {"at", 0}});
    EXPECT_EQ(find("layout", "here"), (Json{4, 6, 2, 3})) << "from where the last list was";
    EXPECT_EQ(find("layout", "next"), (Json{5, 6, 2, 4}));
    EXPECT_EQ(find("layout", ""), (Json{5, 6, 2, 4}));
    Do("insert-page", {{"document", 1}, {"at", 0}});
    EXPECT_EQ(find("layout", "next"), (Json{6, 6, 3, 5}));
    HoldLists(false);
    EXPECT_EQ(current(), (Json{3, 5})) << "in the list that has come";
}

TEST_F(Browsing, RepliesToEverySearchThatAnotherOneFollows)
{
    workbench = std::make_unique<RunningWorkbench>(std::vector<std::string>{},
                                                   std::vector<std::string>{"5000:50"});
    client = Connect();
    const int count = 20;
    for (int i = 0; i < count; ++i) {
        client->Send({{"type", "command"},
                      {"id", 900 + i},
                      {"name", "find"},
                      {"document", 1},
                      {"text", i % 2 == 0 ? "e" : "a"}});
    }
    std::vector<Json> replies;
    while (replies.size() < count) {
        replies.push_back(
            client->ReadUntil([](const Json& message) { return message.at("type") == "reply"; }));
    }
    for (const Json& reply : replies) {
        EXPECT_TRUE(reply.at("error").is_null() || reply.at("reason") == "superseded") << reply;
    }
    EXPECT_EQ(replies.back().at("id"), 900 + count - 1);
    EXPECT_EQ(replies.back().at("count"), Do("find", {{"document", 1}, {"text", "A"}}).at("count"));
}

TEST(CommentSearch, ComparesWhatTheListShowsWithoutCase)
{
    const struct {
        const char16_t* contents;
        const char16_t* text;
        bool isFound;
    } rows[] = {
        {u"Grüße", u"GRÜßE", true},
        {u"Grüße", u"grusse", false},
        {u"ΟΔΟΣ οδος", u"οδοσ ΟΔΟΣ", true},
        {u"\u212A\u017F", u"KS", true},
        {u"\U00010400", u"\U00010428", true},
        {u"\xD801", u"\xD801", true},
        {u"one\r\n  two\u00A0three", u"one two three", true},
        {u"one two", u"one  two", true},
        {u"onetwo", u"one two", false},
        {u"x<sup>2</sup>, <b>H</b>2O", u"x2, h2o", true},
        {u"x<sup>2</sup>", u"sup", false},
        {u"one<br>two<p>three", u"one two three", true},
        {u"a &lt; b", u"a < b", true},
        {u"a < b &c", u"A < B &C", true},
        {u"<script>one</script>two", u"one", false},
        {u"<i>one</p></li>two", u"two", true},
        {u"a.c", u"a?c", false},
        {u"", u"a", false},
    };
    for (const auto& row : rows) {
        const std::u16string shown = Workbench::FoldText(Workbench::ShownText(row.contents));
        EXPECT_EQ(shown.find(Workbench::FoldText(row.text)) != shown.npos, row.isFound)
            << UnicodeText::ToUtf8(row.contents);
    }
}

TEST_F(Browsing, MarksTextByQuadsUnderTheGivenAuthor)
{
    Start({"a.pdf"});
    const Json added =
        Do("add", {{"document", 1},
                   {"page", 2},
                   {"subtype", "Underline"},
                   {"author", "Ж. Reviewer"},
                   {"quads", {50, 30, 90, 31, 50, 20, 90, 21, 10, 18, 60, 18, 10, 8, 60, 8}}});
    const Json list = Do("annotations", {{"document", 1}, {"page", 2}});
    const Json annotation = list.at("annotations").at(added.at("index").get<std::size_t>());
    EXPECT_EQ(annotation.at("title"), "Ж. Reviewer");
    EXPECT_EQ(annotation.at("rect"), Json({10, 8, 90, 31}));
    const std::string content = Get(workbench->Address(), "/documents/1/content").body;
    EXPECT_THAT(content,
                HasSubstr("/QuadPoints [ 50 30 90 31 50 20 90 21 10 18 60 18 10 8 60 8 ]"));
    constexpr std::size_t kNameLength = 43;
    EXPECT_THAT(
        content.substr(content.find("/NM ("), kNameLength),
        testing::MatchesRegex("/NM \\([0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-"
                              "[0-9a-f]{12}\\) "));
    // The lines of the appearance, from its own origin: along the bottom of each quad.
    EXPECT_THAT(content, HasSubstr("40 12.8 m\n80 13.8 l"));
    EXPECT_THAT(content, HasSubstr("0 0.8 m\n50 0.8 l"));
}

TEST_F(Browsing, EditsAndUndoes)
{
    ::setenv("LOGNAME", "Zoë", 1);
    Start({"a.pdf"});
    const std::uint64_t pages = client->Document(1).at("pages");
    const std::string original = client->tree.Text();
    const Json added = Do("add", {{"document", 1},
                                  {"page", 1},
                                  {"subtype", "Highlight"},
                                  {"contents", "Ж <b>bold</b>"},
                                  {"rect", {100, 100, 200, 120}}});
    const std::uint64_t index = added.at("index");
    const Json place = {{"document", 1}, {"page", 1}, {"index", index}};
    EXPECT_EQ(client->Document(1).at("undo"), "add");
    const std::string name = "1_" + std::to_string(index);
    EXPECT_THAT(client->tree.TextOf(Item(name)), HasSubstr("Ж bold"));

    const Json list = Do("annotations", {{"document", 1}, {"page", 1}});
    const Json annotation = list.at("annotations").back();
    EXPECT_EQ(annotation.at("index"), index);
    EXPECT_EQ(annotation.at("subtype"), "Highlight");
    EXPECT_EQ(annotation.at("contents"), "Ж <b>bold</b>");
    EXPECT_EQ(annotation.at("rect"), Json({100, 100, 200, 120}));
    EXPECT_EQ(annotation.at("listed"), true);
    EXPECT_EQ(annotation.at("title"), "Zoë");
    const std::string content = Get(workbench->Address(), "/documents/1/content").body;
    const auto file = Documents::QpdfDocument::OpenBytes(content, "content").document;
    ASSERT_TRUE(file);
    _PDDateRec created{};
    Documents::FunctionTable().AnnotGetCreationDate(
        file->AnnotationAt(1, static_cast<std::uint32_t>(index)).Get(), &created);
    EXPECT_GE(created.year, 2024);

    Json edit = place;
    edit["contents"] = "LONE";
    edit.update({{"type", "command"}, {"name", "edit"}, {"id", 7'000}});
    std::string text = edit.dump();
    client->SendText(text.replace(text.find("LONE"), 4,
                                  R"(\ud800 \\ \udc00\ud83d\ude00\uD8)"
                                  "00"));
    EXPECT_EQ(
        client->ReadUntil([](const Json& m) { return m.value("id", 0) == 7'000; }).at("error"),
        nullptr);
    EXPECT_THAT(client->tree.TextOf(Item(name)), HasSubstr("\uFFFD \\ \uFFFD\U0001F600\uFFFD"));
    Do("undo", {{"document", 1}});
    edit["contents"] = "changed";
    Do("edit", edit);
    EXPECT_THAT(client->tree.TextOf(Item(name)), HasSubstr("changed"));
    Do("focus", place);
    EXPECT_EQ(client->Document(1).at("focused"), (Json{{"page", 1}, {"index", index}}));
    EXPECT_EQ(client->tree.StatesOf(Item(name)), 32u);
    Do("insert-page", {{"document", 1}, {"at", 0}});
    EXPECT_EQ(client->Document(1).at("focused"), (Json{{"page", 2}, {"index", index}}));
    Do("move-page", {{"document", 1}, {"from", 2}, {"to", 0}});
    EXPECT_EQ(client->Document(1).at("undo"), "move-page");
    Do("delete-page", {{"document", 1}, {"page", 1}});
    EXPECT_EQ(client->Document(1).at("pages"), pages);
    Do("focus", {{"document", 1}, {"page", nullptr}, {"index", nullptr}});
    EXPECT_EQ(client->Document(1).at("focused"), nullptr);
    const std::uint64_t revision = client->Document(1).at("revision");
    for (const char* undone : {"delete-page", "move-page", "insert-page", "edit", "add"}) {
        EXPECT_EQ(client->Document(1).at("undo"), undone);
        Do("undo", {{"document", 1}});
    }
    EXPECT_EQ(client->Document(1).at("undo"), nullptr);
    EXPECT_EQ(client->Document(1).at("modified"), false);
    EXPECT_EQ(client->Document(1).at("revision"), revision + 5);
    workbench->Settle(*client);
    ExpectSameTree(*client);
    EXPECT_EQ(Item(name), 0u);
    Do("redo", {{"document", 1}});
    Do("remove", place);
    EXPECT_EQ(Item(name), 0u);
    EXPECT_EQ(client->Document(1).at("redo"), nullptr);
}

TEST_F(Browsing, OpensSavesAndClosesFiles)
{
    Start({"a.pdf"});
    folder.AddSample("b.pdf");
    EXPECT_EQ(Do("open", {{"path", Path("b.pdf")}}).at("document"), 2);
    EXPECT_EQ(client->documents.at("active"), 2);
    EXPECT_EQ(client->Document(2).at("path"), Path("b.pdf"));
    std::vector<std::string> progress;
    for (const Json& message : client->others) {
        if (message.at("type") == "progress") {
            progress.push_back(message.at("state"));
        }
    }
    EXPECT_THAT(progress, ElementsAre("begun", "done"));
    Do("activate", {{"document", 1}});
    EXPECT_EQ(client->documents.at("active"), 1);
    EXPECT_EQ(Do("open", {{"path", Path("./b.pdf")}}).at("document"), 2) << "open already";
    EXPECT_EQ(client->documents.at("active"), 2);

    const std::size_t count = CountIn(ReadFile(Path("b.pdf")), 1);
    const Json edit = {{"document", 2}, {"page", 1}, {"subtype", "Text"}};
    Do("add", edit);
    EXPECT_EQ(client->Command("close", {{"document", 2}, {"unsaved", "ask"}}).at("reason"),
              "unsaved");
    Do("save-copy", {{"document", 2}, {"path", Path("copy.pdf")}});
    EXPECT_EQ(client->Document(2).at("modified"), true);
    EXPECT_EQ(CountIn(ReadFile(Path("copy.pdf")), 1), count + 1);
    Do("save-as", {{"document", 2}, {"path", Path("c.pdf")}});
    EXPECT_EQ(client->Document(2).at("name"), "c.pdf");
    EXPECT_EQ(client->Document(2).at("modified"), false);
    EXPECT_EQ(client->Document(2).at("busy"), nullptr);
    // What is asked for while a file is being written happens behind that.
    client->Send({{"type", "command"}, {"id", 900}, {"name", "save"}, {"document", 2}});
    Do("add", edit);
    EXPECT_EQ(client->Document(2).at("modified"), true);
    EXPECT_EQ(CountIn(ReadFile(Path("c.pdf")), 1), count + 1);
    Do("close", {{"document", 2}, {"unsaved", "save"}});
    EXPECT_EQ(CountIn(ReadFile(Path("c.pdf")), 1), count + 2);
    EXPECT_EQ(CountIn(ReadFile(Path("b.pdf")), 1), count);
    EXPECT_THAT(client->Ids(), ElementsAre(1));
    EXPECT_EQ(client->documents.at("active"), 1);
    Do("insert-page", {{"document", 1}, {"at", 0}});
    Do("close", {{"document", 1}, {"unsaved", "discard"}});
    EXPECT_EQ(client->documents.at("active"), nullptr);
    workbench->Settle(*client);
    ExpectSameTree(*client);
}

TEST_F(Browsing, ReplacesOnlyUnchangedFiles)
{
    Start({"a.pdf"});
    const Json document = {{"document", 1}};
    const auto with = [&](Json more) {
        more.update(document);
        return more;
    };
    const Json overwrite = {{"overwrite", true}};
    Do("insert-page", with({{"at", 0}}));
    folder.AddFile("a.pdf", "another program's");
    EXPECT_EQ(client->Command("save", document).value("reason", ""), "changed-on-disk");
    EXPECT_EQ(client->Command("save-as", with({{"path", Path("a.pdf")}})).value("reason", ""),
              "changed-on-disk");
    EXPECT_EQ(client->Command("close", with({{"unsaved", "save"}})).value("reason", ""),
              "changed-on-disk");
    EXPECT_EQ(ReadFile(Path("a.pdf")), "another program's");
    Do("save", with(overwrite));
    EXPECT_EQ(client->Document(1).at("modified"), false);
    Do("save", document);
    // Of the same size, at another time.
    std::filesystem::last_write_time(Path("a.pdf"), {});
    EXPECT_EQ(client->Command("save", document).value("reason", ""), "changed-on-disk");
    std::filesystem::remove(Path("a.pdf"));
    Do("save", document);
    EXPECT_GT(CountIn(ReadFile(Path("a.pdf")), 1), 0u);

    folder.AddFile("b.pdf", "a stranger's");
    EXPECT_EQ(client->Command("save-copy", with({{"path", Path("b.pdf")}})).value("reason", ""),
              "exists");
    EXPECT_EQ(client->Command("save-as", with({{"path", Path("b.pdf")}})).value("reason", ""),
              "exists");
    EXPECT_EQ(ReadFile(Path("b.pdf")), "a stranger's");
    EXPECT_EQ(client->Document(1).at("name"), "a.pdf");
    Do("save-copy", with({{"path", Path("b.pdf")}, {"overwrite", true}}));
    Do("save-as", with({{"path", Path("b.pdf")}, {"overwrite", true}}));
    Do("save", document);
    Do("close", with({{"unsaved", "save"}}));

    Do("open", {{"path", Path("a.pdf")}});
    Do("insert-page", {{"document", 2}, {"at", 0}});
    folder.AddFile("a.pdf", "another program's");
    EXPECT_EQ(client->Command("save", {{"document", 2}}).value("reason", ""), "changed-on-disk");
}

TEST_F(Browsing, ShowsEncryptedFilesWithoutTheirEncryption)
{
    Start({"a.pdf"});
    folder.AddFile("e.pdf", Encrypted(ReadFile(Path("a.pdf"))));
    EXPECT_EQ(client->Command("open", {{"path", Path("e.pdf")}}).value("reason", ""), "password");
    Do("open", {{"path", Path("e.pdf")}, {"password", "owner"}});
    const auto isEncrypted = [](const std::string& bytes) {
        return Documents::QpdfDocument::OpenBytes(bytes, "bytes").failure ==
               Documents::OpenFailure::kPassword;
    };
    for (const bool edited : {false, true}) {
        const std::size_t count = CountIn(ReadFile(Path("a.pdf")), 1) + (edited ? 1 : 0);
        EXPECT_EQ(CountIn(Get(workbench->Address(), "/documents/2/content").body, 1), count);
        EXPECT_TRUE(isEncrypted(Get(workbench->Address(), "/documents/2/download").body));
        Do("add", {{"document", 2}, {"page", 1}, {"subtype", "Text"}});
    }
    Do("save", {{"document", 2}});
    EXPECT_TRUE(isEncrypted(ReadFile(Path("e.pdf"))));
}

TEST_F(Browsing, ReportsDamageWithoutTheFolder)
{
    Start({"a.pdf"});
    const std::string sample = ReadFile(Path("a.pdf"));
    folder.AddFile("cut.pdf", sample.substr(0, sample.rfind("startxref")));
    Do("open", {{"path", Path("cut.pdf")}});
    const Json warnings = client->Document(2).at("warnings");
    ASSERT_FALSE(warnings.empty());
    for (const Json& warning : warnings) {
        EXPECT_THAT(warning.get<std::string>(), Not(HasSubstr("cut.pdf")));
    }
}

TEST(ShortWarnings, AreFewAndShortAndWithoutTheName)
{
    const struct {
        const char* line;
        const char* shortened;
    } rows[] = {
        {"/home/u/a.pdf (offset 9): bad", "(offset 9): bad"},
        {"/home/u/a.pdf: bad", "bad"},
        {"a.pdf: an annotation cannot be read: a.pdf: bad",
         "an annotation cannot be read: a.pdf: bad"},
        {"/home/a.pdf/a.pdf.d/a.pdf: bad", "bad"},
        {"ya.pdf: bad", "ya.pdf: bad"},
        {"a.pdf", "a.pdf"},
        {"", ""},
    };
    for (const auto& row : rows) {
        EXPECT_THAT(Workbench::ShortWarnings({row.line}, "a.pdf"), ElementsAre(row.shortened));
    }
    const std::vector<std::string> many(25, std::string(5000, 'x'));
    const auto lines = Workbench::ShortWarnings(many, "a.pdf");
    ASSERT_EQ(lines.size(), 21u);
    EXPECT_LT(lines.front().size(), 300u);
    EXPECT_EQ(lines.back(), "and 5 more");
}

TEST(Author, KnowsTheTimeInItsZone)
{
    const struct {
        const char* zone;
        _PDDateRec date;
    } rows[] = {
        {"UTC0", {2025, 1, 31, 23, 30, 5, 0}},
        {"XXX-2", {2025, 2, 1, 1, 30, 5, 2}},
        {"XXX5", {2025, 1, 31, 18, 30, 5, -5}},
        {"XXX-5:30", {2025, 1, 31, 23, 30, 5, 0}},
    };
    for (const auto& row : rows) {
        ::setenv("TZ", row.zone, 1);
        ::tzset();
        const _PDDateRec date = Workbench::DateOf(1738366205);
        EXPECT_EQ(std::memcmp(&date, &row.date, sizeof date), 0) << row.zone;
    }
    ::unsetenv("TZ");
    ::tzset();
}

// What may edit waits while a file is being written, and everything keeps its order behind it.
TEST_F(Browsing, KeepsTheOrderOfInputAndCommandsWhileFilesAreWritten)
{
    Start({"a.pdf"});
    client->Send({{"type", "click"}, {"element", Item("0_0")}});
    client->Fence();
    for (int round = 0; round < 20; ++round) {
        const Json command = {{"type", "command"}, {"id", 900}, {"document", 1}};
        Json save = command;
        save["name"] = "save";
        Json undo = command;
        undo["name"] = "undo";
        client->Send(save);
        client->Send({{"type", "key"}, {"key", "Delete"}});
        client->Send(undo);
        client->Send({{"type", "key"}, {"key", "Down"}});
        Do("save", {{"document", 1}});
        EXPECT_EQ(client->tree.StatesOf(Item("0_1")), 32u) << "Down came behind the undoing";
        EXPECT_EQ(client->Document(1).at("redo"), "remove");
        client->Send({{"type", "key"}, {"key", "Home"}});
        client->Fence();
    }
    workbench->Settle(*client);
    ExpectSameTree(*client);
    EXPECT_EQ(client->tree.StatesOf(Item("0_0")), 32u);
}

// A long file is written for its pages to be shown: an edit stops that, a download is waited for.
TEST_F(Browsing, LetsEditsOvertakeTheWritingOfShownFiles)
{
    Start({"a.pdf"});
    const auto population = Documents::MakePopulationDocument({6000, 150}, 5);
    folder.AddFile("long.pdf", population->WriteBytes().bytes);
    Do("open", {{"path", Path("long.pdf")}});
    workbench->Settle(*client);
    const Json comment = {{"document", 2}, {"page", 0}, {"subtype", "Text"}};
    std::size_t count = CountIn(ReadFile(Path("long.pdf")), 0);
    for (const std::string what : {"content", "download"}) {
        Do("add", comment);
        ++count;
        auto given = std::async(std::launch::async, [&] {
            return Get(workbench->Address(), "/documents/2/" + what).body;
        });
        const auto isWriting = [&] {
            bool isHeld = false;
            workbench->OnUi([&](BrowserWorkbench& running) {
                isHeld = running.TheBrowserSession().Jobs().IsHeld(2);
            });
            return isHeld;
        };
        while (!isWriting() &&
               given.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {}
        Do("add", comment);
        EXPECT_EQ(CountIn(given.get(), 0), what == "download" ? count : count + 1) << what;
        ++count;
    }
}

TEST_F(Browsing, OpensUploadedFiles)
{
    Start({"a.pdf"});
    const std::string sample = ReadFile(Path("a.pdf"));
    const HttpResult posted =
        Post(workbench->Address(), "/documents?name=..%2Fx%2F%D0%96%20%221%22.pdf", sample);
    EXPECT_EQ(Json::parse(posted.body).at("document"), 2);
    client->Fence();
    EXPECT_EQ(client->Document(2).at("name"), "Ж \"1\".pdf");
    EXPECT_EQ(client->Document(2).at("path"), nullptr);
    EXPECT_EQ(client->Command("save", {{"document", 2}}).at("reason"), "path");
    Do("insert-page", {{"document", 2}, {"at", 0}});
    EXPECT_EQ(client->Command("close", {{"document", 2}, {"unsaved", "save"}}).at("reason"),
              "path");
    EXPECT_THAT(Get(workbench->Address(), "/documents/2/download").header,
                HasSubstr("filename=\"____1_.pdf\"; filename*=UTF-8''%D0%96%20%221%22.pdf"));

    const HttpResult damaged = Post(workbench->Address(), "/documents?name=d.pdf", "no file");
    EXPECT_EQ(damaged.status, 422);
    EXPECT_EQ(Json::parse(damaged.body).at("reason"), "damaged");
    EXPECT_EQ(client->Command("open", {{"path", Path("a.pdf")}}).at("error"), nullptr);
}

TEST_F(Browsing, ServesFilesOfItsOwnAndOfThePanel)
{
    Start({"a.pdf"});
    const HttpResult sheet = Get(workbench->Address(), "/panel/document-panel-comments/panel.css");
    EXPECT_EQ(sheet.status, 200);
    EXPECT_THAT(sheet.header, HasSubstr("Content-Type: text/css"));
    EXPECT_THAT(sheet.body, HasSubstr("li[wb-current]"));
    const HttpResult image =
        Get(workbench->Address(), "/panel/document-panel-comments/text-ico.png");
    EXPECT_THAT(image.header, HasSubstr("Content-Type: image/png"));
    const HttpResult drawing =
        Get(workbench->Address(), "/panel/document-panel-comments/artwork/text-ico.svg");
    EXPECT_THAT(drawing.header, HasSubstr("Content-Type: image/svg+xml"));
    EXPECT_EQ(Get(workbench->Address(), "/panel/document-panel-comments/artwork").status, 404);
    EXPECT_EQ(Get(workbench->Address(), "/panel/document-panel-comments/panel.htm").status, 404);
    EXPECT_EQ(Get(workbench->Address(), "/panel/document-panel-comments/none.css").status, 404);
    EXPECT_EQ(Get(workbench->Address(), "/app/none.js").status, 404);
    EXPECT_EQ(Get(workbench->Address(), "/nonsense").status, 404);
    EXPECT_EQ(Get(workbench->Address(), "/documents/1/nonsense").status, 404);
    EXPECT_EQ(Get(workbench->Address(), "/documents/x/content").status, 404);
}

TEST_F(Browsing, WritesRecoveryCopiesAtExit)
{
    Start({"a.pdf", "b.PDF", "c.pdf"});
    folder.AddFile("a.recovered.pdf", "taken");
    const std::size_t count = CountIn(ReadFile(Path("a.pdf")), 1);
    for (const int document : {1, 2}) {
        Do("add", {{"document", document}, {"page", 1}, {"subtype", "Text"}});
    }
    const HttpResult posted =
        Post(workbench->Address(), "/documents?name=sent.pdf", ReadFile(Path("a.pdf")));
    EXPECT_EQ(posted.status, 200);
    Do("add", {{"document", 4}, {"page", 1}, {"subtype", "Text"}});
    std::vector<std::string> last;
    std::thread reader([&] {
        EXPECT_EQ(client->ReadClose(), 1001u);
        for (const Json& message : client->others) {
            last.push_back(message.at("type"));
        }
    });
    const std::string errors = workbench->End();
    reader.join();
    const std::filesystem::path copies[] = {Path("a.recovered-2.pdf"), Path("b.recovered.pdf"),
                                            folder.At("state") / "sent.recovered.pdf"};
    for (const auto& copy : copies) {
        EXPECT_THAT(errors, HasSubstr(copy.string()));
        EXPECT_EQ(CountIn(ReadFile(copy), 1), count + 1) << copy;
    }
    EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 3);
    EXPECT_EQ(ReadFile(Path("a.recovered.pdf")), "taken");
    EXPECT_EQ(CountIn(ReadFile(Path("a.pdf")), 1), count);
    ASSERT_GE(last.size(), 4u);
    EXPECT_THAT(std::vector<std::string>(last.end() - 4, last.end()),
                ElementsAre("notice", "notice", "notice", "goodbye"));
}

TEST_F(Browsing, PromptsClientsToSaveBeforeExit)
{
    Start({"a.pdf", "b.pdf"});
    auto other = Connect();
    const auto documentsAskedFor = [](BrowserClient& asked) {
        const Json ending =
            asked.ReadUntil([](const Json& message) { return message.at("type") == "ending"; });
        const Json& documents = ending.at("documents");
        EXPECT_EQ(ending.contains("seconds"), !documents.empty());
        EXPECT_LE(ending.value("seconds", 0), 60);
        return documents;
    };
    const Json save = {{"unsaved", "save"}};
    EXPECT_TRUE(client->Command("end", save).at("error").is_string()) << "nobody has asked";
    Do("insert-page", {{"document", 1}, {"at", 0}});
    workbench->Signal(SIGINT);
    EXPECT_EQ(documentsAskedFor(*client), Json({1}));
    EXPECT_EQ(documentsAskedFor(*other), Json({1}));
    EXPECT_EQ(documentsAskedFor(*std::make_unique<BrowserClient>(workbench->Address())), Json({1}));
    EXPECT_TRUE(client->Command("end", {{"unsaved", "x"}}).at("error").is_string());
    Do("insert-page", {{"document", 2}, {"at", 0}});
    EXPECT_EQ(documentsAskedFor(*other), Json({1, 2}));
    Do("end", {{"unsaved", "cancel"}});
    EXPECT_EQ(documentsAskedFor(*other), Json::array());
    EXPECT_TRUE(other->Command("end", save).at("error").is_string()) << "the first answer counts";

    folder.AddFile("b.pdf", "another program's");
    workbench->Signal(SIGINT);
    EXPECT_EQ(documentsAskedFor(*other), Json({1, 2}));
    EXPECT_EQ(client->Command("end", save).value("reason", ""), "changed-on-disk");
    EXPECT_EQ(client->Document(1).at("modified"), false);
    EXPECT_EQ(documentsAskedFor(*other), Json({2})) << "the question stands";
    other.reset();
    Do("end", {{"unsaved", "discard"}});
    const std::string errors = WaitForEnd();
    EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 2) << errors;
    EXPECT_THAT(errors, AllOf(HasSubstr("Ctrl-C"), Not(HasSubstr("recovered"))));
    EXPECT_FALSE(std::filesystem::exists(Path("b.recovered.pdf")));
}

TEST_F(Browsing, WritesRecoveryCopiesWithoutAnAnswer)
{
    using std::chrono::milliseconds;
    const struct {
        const char* name;
        std::vector<int> signals;
        std::function<void()> then;
        milliseconds patience = milliseconds(3'600'000);
        bool asks = true;
    } rows[] = {
        {"asked for",
         {SIGINT},
         [this] {  // rows that are asked for need not come any more
             client->Send(
                 {{"type", "command"}, {"id", 900}, {"name", "end"}, {"unsaved", "copies"}});
         }},
        {"once more", {SIGINT, SIGINT}, [] {}, milliseconds(3'600'000), false},
        {"the last client disconnects", {SIGINT}, [this] { client.reset(); }},
        {"too late", {SIGINT}, [] {}, milliseconds(50)},
        {"by the system", {SIGTERM}, [] {}, milliseconds(3'600'000), false},
        {"no terminal", {SIGHUP}, [] {}, milliseconds(3'600'000), false},
    };
    for (const auto& row : rows) {
        Start({"a.pdf"}, row.patience);
        Do("insert-page", {{"document", 1}, {"at", 0}});
        for (const int signal : row.signals) {
            workbench->Signal(signal);
        }
        if (row.asks) {
            client->ReadUntil([](const Json& message) { return message.at("type") == "ending"; });
        }
        row.then();
        EXPECT_THAT(WaitForEnd(), HasSubstr("a.recovered.pdf")) << row.name;
        EXPECT_TRUE(std::filesystem::remove(Path("a.recovered.pdf"))) << row.name;
    }
    // Nothing to ask, or nobody.
    Start({"a.pdf"});
    workbench->Signal(SIGINT);
    EXPECT_EQ(WaitForEnd(), "");
    Start({"a.pdf"});
    Do("insert-page", {{"document", 1}, {"at", 0}});
    client.reset();
    workbench->Signal(SIGINT);
    EXPECT_THAT(WaitForEnd(), HasSubstr("a.recovered.pdf"));
}

// A workbench in a process of its own is killed once its copy is there; the next one offers it.
TEST_F(Browsing, RestoresWhatAKilledWorkbenchHadCopied)
{
    const std::string path = folder.AddSample("a.pdf");
    const std::filesystem::path copy = Path("a.recovered.pdf");
    const std::size_t count = CountIn(ReadFile(path), 1);
    const Workbench::RecoveryOptions atOnce{.folders = {}, .delay = {}};
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const pid_t process = ::fork();
    if (process == 0) {
        const RunningWorkbench killed({path}, {}, atOnce);
        const std::string address =
            "http://" + killed.Address().host + "/" + killed.Address().token + "/";
        const bool isTold = ::write(ends[1], address.data(), address.size()) == std::ssize(address);
        ::pause();
        ::_Exit(isTold ? 0 : 1);
    }
    std::string address(200, '\0');
    address.resize(static_cast<std::size_t>(::read(ends[0], address.data(), address.size())));
    ::close(ends[0]);
    ::close(ends[1]);
    client = std::make_unique<BrowserClient>(ServerAddress(address));
    Do("add", {{"document", 1}, {"page", 1}, {"subtype", "Text"}});
    while (!std::filesystem::exists(copy)) {
        client->Fence();
    }
    {
        const auto beside = std::make_unique<RunningWorkbench>(std::vector<std::string>{path});
        BrowserClient other(beside->Address());
        other.Fence();
        EXPECT_EQ(other.Document(1).at("recovery"), nullptr) << "the copy is another one's";
    }
    ASSERT_EQ(::kill(process, SIGKILL), 0);
    ASSERT_EQ(::waitpid(process, nullptr, 0), process);

    workbench = std::make_unique<RunningWorkbench>(std::vector<std::string>{path});
    client = Connect();
    EXPECT_EQ(client->Document(1).at("recovery"), copy.string());
    const Json restored = Do("recovery", {{"document", 1}, {"use", "restore"}});
    const std::uint64_t number = restored.at("document");
    const Json document = client->Document(number);
    EXPECT_EQ(client->Ids(), std::vector<std::uint64_t>{number});
    EXPECT_EQ(document.at("path"), path);
    EXPECT_EQ(document.at("name"), "a.pdf");
    EXPECT_EQ(document.at("modified"), true);
    EXPECT_EQ(document.at("recovery"), nullptr);
    EXPECT_EQ(CountIn(ReadFile(copy), 1), count + 1) << "it stays until the document is saved";
    Do("save", {{"document", number}});
    client->Fence();
    EXPECT_EQ(CountIn(ReadFile(path), 1), count + 1);
    EXPECT_FALSE(std::filesystem::exists(copy));
    client.reset();
    EXPECT_THAT(workbench->End(), AllOf(HasSubstr(copy.string()), HasSubstr("earlier run")));
}

TEST_F(Browsing, RemovesCopiesThatAreNotNeededAnyMore)
{
    const std::filesystem::path copy = Path("a.recovered.pdf");
    const Json document = {{"document", 1}};
    const struct {
        const char* name;
        std::function<void()> act;
    } rows[] = {
        {"saved", [&] { Do("save", document); }},
        {"taken back", [&] { Do("undo", document); }},
        {"closed",
         [&] {
             Do("close", {{"document", 1}, {"unsaved", "discard"}});
         }},
        {"discarded at the end",
         [&] {
             workbench->Signal(SIGINT);
             client->ReadUntil([](const Json& m) { return m.at("type") == "ending"; });
             Do("end", {{"unsaved", "discard"}});
             WaitForEnd();
         }},
        {"replaced at the end",
         [&] {
             Do("insert-page", {{"document", 1}, {"at", 0}});
             client.reset();
             EXPECT_THAT(workbench->End(), HasSubstr(copy.string()));
             EXPECT_FALSE(std::filesystem::exists(Path("a.recovered-2.pdf")));
             workbench =
                 std::make_unique<RunningWorkbench>(std::vector<std::string>{Path("a.pdf")});
             client = Connect();
             Do("recovery", {{"document", 1}, {"use", "discard"}});
             EXPECT_EQ(client->Document(1).at("recovery"), nullptr);
             EXPECT_EQ(
                 client->Command("recovery", {{"document", 1}, {"use", "restore"}}).at("reason"),
                 "gone");
         }},
    };
    for (const auto& row : rows) {
        workbench = std::make_unique<RunningWorkbench>(
            std::vector<std::string>{folder.AddSample("a.pdf")}, std::vector<std::string>{},
            Workbench::RecoveryOptions{.folders = {}, .delay = {}});
        client = Connect();
        Do("insert-page", {{"document", 1}, {"at", 0}});
        while (!std::filesystem::exists(copy)) {
            client->Fence();
        }
        row.act();
        client.reset();
        workbench->End();
        EXPECT_FALSE(std::filesystem::exists(copy)) << row.name;
    }
}

TEST_F(Browsing, ReportsFailuresInThePanelAndContinues)
{
    Start({"a.pdf"});
    workbench->OnUi([](BrowserWorkbench& running) {
        running.TheHost().State().failures.Add({"UIHandler::HandleKey", 2, "on purpose"});
    });
    client->Fence();
    EXPECT_THAT(client->others.back().at("text").get<std::string>(), HasSubstr("on purpose"));
}

// Several clients connect, disconnect and act at random; each that stays holds the engine's tree.
TEST_F(Browsing, KeepsCopiesOfChangingClientsEqual)
{
    Start({"a.pdf", "b.pdf"});
    const unsigned seed = std::random_device()();
    RecordProperty("seed", std::to_string(seed));
    std::mt19937 random(seed);
    const auto below = [&](unsigned end) { return static_cast<unsigned>(random() % end); };
    std::vector<std::unique_ptr<BrowserClient>> clients;
    const char* const keys[] = {"Up", "Down", "PageUp", "PageDown", "Home", "End", "Delete"};
    for (int step = 0; step < 150; ++step) {
        const unsigned document = 1 + below(2);
        switch (below(7)) {
        case 0:
            clients.push_back(Connect());
            break;
        case 1:
            if (!clients.empty()) {
                clients.erase(clients.begin());
            }
            break;
        case 2:
            client->Command("add", {{"document", document},
                                    {"page", below(7)},
                                    {"subtype", "Ink"},
                                    {"contents", std::string(below(2000), 'x')}});
            break;
        case 3:
            client->Command(below(3) == 0 ? "redo" : "undo", {{"document", document}});
            break;
        case 4:
            client->Command("activate", {{"document", document}});
            break;
        case 5:
            client->Send({{"type", "click"}, {"element", 1 + below(3000)}});
            break;
        default:
            client->Send({{"type", "key"}, {"key", keys[below(7)]}});
        }
        if (step % 10 == 9) {
            workbench->Settle(*client);
            ASSERT_TRUE(client->tree.Text() == workbench->PanelText(client->tree))
                << "seed " << seed;
            for (const auto& other : clients) {
                other->Fence();
                ASSERT_TRUE(other->tree.Text() == workbench->PanelText(other->tree))
                    << "seed " << seed;
            }
        }
    }
}

TEST(RecoveryCopy, GoesToTheFirstPlaceThatTakesIt)
{
    const TemporaryFolder folder;
    const std::string path = folder.AddSample("a.pdf");
    const auto opened = Documents::QpdfDocument::Open(path);
    folder.AddFile("file", "no folder");
    const auto copy =
        Workbench::KeptCopy().Write(*opened.document, "a.pdf", folder.At("file") / "a.pdf",
                                    {folder.At("file") / "x", folder.At("new") / "deep"});
    EXPECT_EQ(copy.error, "");
    EXPECT_EQ(copy.file, folder.At("new") / "deep" / "a.recovered.pdf");
    EXPECT_EQ(std::filesystem::status(copy.file).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    EXPECT_THAT(Workbench::KeptCopy()
                    .Write(*opened.document, "a.pdf", std::nullopt, {folder.At("file")})
                    .error,
                AllOf(HasSubstr("a.pdf"), HasSubstr("no recovery copy")));
}

TEST(StopSignals, AreHandledUntilRefused)
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        std::promise<int> taken;
        const Workbench::StopSignals signals([&](int number) {
            taken.set_value(number);
            return true;
        });
        ::raise(signal);
        EXPECT_EQ(taken.get_future().get(), signal);
    }
    EXPECT_EXIT(
        {
            std::promise<void> taken;
            const Workbench::StopSignals signals([&](int signal) {
                if (signal == SIGTERM) {
                    taken.set_value();
                }
                return signal == SIGTERM;
            });
            ::raise(SIGTERM);
            taken.get_future().get();
            ::raise(SIGINT);
            ::pause();
        },
        testing::ExitedWithCode(128 + SIGINT), "");
}

TEST(BrowserWorkbench, ReportsFilesThatItCannotOpenAtOnce)
{
    EXPECT_THROW(RunningWorkbench({"no-such-file.pdf"}), Workbench::ActionRefused);
}

}  // namespace
}  // namespace WebTests
