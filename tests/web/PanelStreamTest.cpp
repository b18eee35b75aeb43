// A client that applies the messages, and nothing else, ends with the engine's tree.
#include "web/PanelStream.h"
#include "RandomPage.h"
#include "TreeCopy.h"

#include <gtest/gtest.h>

namespace WebTests {
namespace {

using HtmlEngine::InsertPosition;
using Workbench::PanelMessage;
using Workbench::PanelStream;

// A browser client.
struct Follower {
    TreeCopy copy;

    void Take(const std::vector<PanelMessage>& messages)
    {
        for (const PanelMessage& message : messages) {
            copy.Apply(nlohmann::json::parse(message));
        }
    }
};

TEST(PanelStream, KeepsCopiesEqualToTheTree)
{
    HtmlEngine::Test::ForEachSeed(10, [](unsigned seed) {
        HtmlEngine::Test::RandomPage changing(seed);
        PanelStream stream(*changing.page);
        Follower first;
        Follower late;
        first.Take(stream.Snapshot());
        for (int step = 0; step < 150; ++step) {
            for (unsigned changes = changing.random() % 4; changes > 0; --changes) {
                changing.Change();
            }
            const auto messages = stream.TakeChanges();
            first.Take(messages);
            if (step == 70) {
                late.Take(stream.Snapshot());
            } else if (step > 70) {
                late.Take(messages);
            }
            ASSERT_EQ(first.copy.Text(), TreeText(*changing.page)) << "seed " << seed;
        }
        ASSERT_EQ(late.copy.Text(), first.copy.Text());
        ASSERT_EQ(late.copy.Find("id", "a"), first.copy.Find("id", "a")) << "the ids are shared";
    });
}

std::string Repeated(const std::string& text, std::size_t count)
{
    std::string all;
    for (std::size_t i = 0; i < count; ++i) {
        all += text;
    }
    return all;
}

// Wide, deep, and behind changes that are in the same message; a big text alone is a message.
TEST(PanelStream, SplitsLargeInsertionsAtAnyNode)
{
    const struct {
        std::string markup;
        std::size_t leastMessages;
    } rows[] = {
        {Repeated("<li a=1>x<b>y<i>z</i></b></li>", 3000), 9},
        {Repeated("<ul><li><p>", 150) + Repeated("<u>t</u><!--c-->", 4000), 6},
        {Repeated("<p><svg><g><path/></g></svg></p>", 2000), 5},
        {"<p>" + std::string(3u << 20, 'x') + "</p><p>y</p>", 2},
    };
    for (const auto& row : rows) {
        HtmlEngine::Document document;
        document.Load("<p id=a></p><p id=b></p>");
        PanelStream stream(document);
        Follower follower;
        follower.Take(stream.Snapshot());
        HtmlEngine::ElementHandle element = HtmlEngine::kNoElement;
        document.SelectFirst(document.Root(), "#a", element);
        document.SetAttribute(element, "title", "before");
        document.SetHtml(element, row.markup, InsertPosition::InsertAfter);
        document.SetAttribute(element, "title", "behind");
        const auto messages = stream.TakeChanges();
        EXPECT_GE(messages.size(), row.leastMessages);
        follower.Take(messages);
        EXPECT_EQ(follower.copy.Remaining(), 0u);
        EXPECT_TRUE(follower.copy.Text() == TreeText(document));
        Follower late;
        late.Take(stream.Snapshot());
        EXPECT_TRUE(late.copy.Text() == TreeText(document));
    }
}

}  // namespace
}  // namespace WebTests
