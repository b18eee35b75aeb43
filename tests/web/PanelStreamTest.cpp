// A client that applies the messages, and nothing else, ends with the engine's tree.
#include "web/PanelStream.h"
#include "RandomPage.h"
#include "TreeCopy.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace WebTests {
namespace {

using HtmlEngine::ElementHandle;
using HtmlEngine::InsertPosition;
using HtmlEngine::kNoElement;
using Workbench::PanelMessage;
using Workbench::PanelStream;
using Workbench::SocketNumber;

// A browser client.
struct Follower {
    Follower(PanelStream& panel, SocketNumber socket) : stream(panel), number(socket)
    {
        stream.Connect(number);
        Take();
    }

    std::size_t Take()
    {
        const std::vector<PanelMessage> messages = stream.TakeMessages(number);
        for (const PanelMessage& message : messages) {
            copy.Apply(nlohmann::json::parse(message));
        }
        return messages.size();
    }

    PanelStream& stream;
    const SocketNumber number;
    TreeCopy copy;
};

TEST(PanelStream, KeepsCopiesEqualToTheTree)
{
    HtmlEngine::Test::ForEachSeed(10, [](unsigned seed) {
        HtmlEngine::Test::RandomPage changing(seed);
        PanelStream stream(*changing.page);
        Follower first(stream, 1);
        std::unique_ptr<Follower> late;
        for (int step = 0; step < 150; ++step) {
            for (unsigned changes = changing.random() % 4; changes > 0; --changes) {
                changing.Change();
            }
            first.Take();
            if (step == 70) {
                late = std::make_unique<Follower>(stream, 2);
            } else if (late) {
                late->Take();
            }
            ASSERT_EQ(first.copy.Text(), TreeText(*changing.page, first.copy)) << "seed " << seed;
        }
        ASSERT_EQ(late->copy.Text(), first.copy.Text());
        ASSERT_EQ(late->copy.Find("id", "a"), first.copy.Find("id", "a")) << "the ids are shared";
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
        Follower follower(stream, 1);
        ElementHandle element = kNoElement;
        document.SelectFirst(document.Root(), "#a", element);
        document.SetAttribute(element, "title", "before");
        document.SetHtml(element, row.markup, InsertPosition::InsertAfter);
        document.SetAttribute(element, "title", "behind");
        EXPECT_GE(follower.Take(), row.leastMessages);
        EXPECT_EQ(follower.copy.Remaining(), 0u);
        EXPECT_TRUE(follower.copy.Text() == TreeText(document, follower.copy));
        const Follower late(stream, 2);
        EXPECT_TRUE(late.copy.Text() == TreeText(document, late.copy));
    }
}

// A panel with two lists, changed as the panel changes them and in ways that it never does.
class RandomLists {
public:
    explicit RandomLists(unsigned seed) : random(seed)
    {
        page.Load(
            "<body><div class=panel-content doc-view-addr=1><div "
            "class=results-container></div></div>"
            "<div class=panel-content doc-view-addr=2><div class=results-container></div></div>");
    }

    unsigned Below(unsigned limit) { return static_cast<unsigned>(random()) % limit; }

    ElementHandle List() { return Any("div.results-container"); }

    void Change()
    {
        switch (Below(12)) {
        case 0:
            page.SetHtml(List(), Pages(Below(2) == 0 ? 3 : 60), InsertPosition::ReplaceContent);
            return;
        case 1:
            page.SetHtml(Any("ul[page-item]"), Pages(1 + Below(3) * Below(8)), AnyBeside());
            return;
        case 2:
            page.Delete(Any("ul[page-item]"));
            return;
        case 3:
            Replace(Any("ul[page-item]"), true);
            return;
        case 4:
            page.SetHtml(Any("ul.comments > li"), Items(1 + Below(3) * Below(8)), AnyBeside());
            return;
        case 5:
            page.Delete(Any("ul.comments > li"));
            return;
        case 6:
            Replace(Any("ul.comments > li"), false);
            return;
        case 7:
            page.SetHtml(Any("ul.comments"), Items(Below(90)), InsertPosition::ReplaceContent);
            return;
        case 8:
        case 9: {
            const ElementHandle folded = Any("li[page-index]");
            const auto bits = HtmlEngine::ElementState::kCollapsed;
            if (Below(2) == 0) {
                page.SetState(folded, bits, 0);
            } else {
                page.SetState(folded, 0, bits);
            }
            return;
        }
        case 10:
            page.SetText(Any("p"), "text");
            return;
        default:
            page.SetAttribute(Any("ul[page-item], li, popup td"), "title",
                              std::to_string(Below(9)));
        }
    }

    HtmlEngine::Document page;
    HtmlEngine::Test::Random random;

private:
    ElementHandle Any(const char* selector)
    {
        std::vector<ElementHandle> found;
        page.SelectAll(page.Root(), selector, [&](ElementHandle element) {
            found.push_back(element);
            return true;
        });
        return found.empty() ? kNoElement : found[Below(static_cast<unsigned>(found.size()))];
    }

    InsertPosition AnyBeside()
    {
        return Below(2) == 0 ? InsertPosition::InsertBefore : InsertPosition::InsertAfter;
    }

    // By one with the same name, as the panel brings a page or a comment up to date.
    void Replace(ElementHandle element, bool isPage)
    {
        const std::string name = page.Attribute(element, "page-item").value_or("");
        page.SetHtml(element, isPage ? Page(name) : Items(1), InsertPosition::ReplaceElement);
    }

    std::string Items(unsigned count)
    {
        std::string items;
        for (unsigned i = 0; i < count; ++i) {
            items += Below(4) == 0
                         ? "<li annot-name=x>\n<h3>t</h3> "
                           "<ul page-item=9><li><p>a</p><div><ul class=comments><li>i</ul>"
                           "</div></ul><popup><td>d</popup></li>\n"
                         : "<li annot-name=y><p>c</p><popup><td>d</td></popup></li>";
        }
        return items;
    }

    std::string Page(const std::string& name)
    {
        return "<ul page-item=\"" + name +
               "\">\n<li page-index=1><div class=icon>c</div>\n<div>"
               "<ul class=comments>" +
               Items(Below(3) == 0 ? 80 : Below(4)) + "</ul></div></li></ul>";
    }

    std::string Pages(unsigned count)
    {
        std::string pages = Below(9) == 0 ? "<p id=NoItemsMessage>none</p>" : "";
        for (unsigned i = 0; i < count; ++i) {
            pages += Page(std::to_string(Below(100))) + "\n";
        }
        return pages;
    }
};

// What a client sees of the lists is the engine's, whatever is changed and looked at in between.
TEST(PanelStream, ShowsTheRowsOfListsThatAreAskedFor)
{
    HtmlEngine::Test::ForEachSeed(8, [](unsigned seed) {
        RandomLists lists(seed);
        PanelStream stream(lists.page);
        Follower other(stream, 1);
        Follower follower(stream, 2);
        for (int step = 0; step < 120; ++step) {
            for (unsigned changes = lists.Below(4); changes > 0; --changes) {
                lists.Change();
            }
            follower.Take();
            const std::uint64_t list = Workbench::IdOf(lists.page.NodeOf(lists.List()));
            const std::size_t count = follower.copy.ListWith(list)->count;
            const std::size_t from = lists.Below(70);
            const std::size_t to = from + lists.Below(9);
            const std::size_t firstItem = lists.Below(90);
            stream.ViewOf(follower.number)
                .MoveWindow(list, {from, firstItem}, {to, lists.Below(100)});
            const auto tooltips = follower.copy.ClosedTooltips();
            if (!tooltips.empty()) {
                stream.ViewOf(follower.number)
                    .OpenTooltip(tooltips[lists.Below(1000) % tooltips.size()]);
            }
            follower.Take();
            other.Take();
            ASSERT_EQ(follower.copy.Text(), TreeText(lists.page, follower.copy)) << "seed " << seed;
            ASSERT_EQ(other.copy.Text(), TreeText(lists.page, other.copy)) << "seed " << seed;
            ASSERT_EQ(follower.copy.ShownOf(list), std::min(to + 1, count) - std::min(from, count))
                << "seed " << seed;
        }
    });
}

}  // namespace
}  // namespace WebTests
