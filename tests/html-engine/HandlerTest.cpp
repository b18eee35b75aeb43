#include "TestPage.h"

#include <functional>
#include <memory>

namespace HtmlEngine::Test {
namespace {

// Writes its name into a log when it is detached, then does what it was told to.
class LoggingHandler : public AttachedHandler {
public:
    LoggingHandler(std::string name, std::string& log) : name_(std::move(name)), log_(log) {}

    void OnDetached(ElementHandle element) noexcept override
    {
        log_ += name_ + " ";
        lastElement = element;
        if (then) {
            then();
        }
    }

    std::function<void()> then;
    ElementHandle lastElement = kNoElement;

private:
    std::string name_;
    std::string& log_;
};

class Handlers : public ::testing::Test {
protected:
    std::shared_ptr<LoggingHandler> Attach(std::string_view selector, const std::string& name)
    {
        auto handler = std::make_shared<LoggingHandler>(name, log);
        EXPECT_EQ(page->AttachHandler(page.Find(selector), handler), Result::Success);
        return handler;
    }

    std::string TakeLog() { return std::exchange(log, {}); }

    // Declared before the page, whose end writes into it.
    std::string log;
    TestPage page{"<div id=a><p id=b></p><p id=c><i id=d></i></p></div><p id=e></p>"};
};

TEST_F(Handlers, AreToldOnceInDocumentOrderWhateverTakesTheirElementAway)
{
    const struct {
        std::string_view what;
        std::function<void()> end;
    } rows[] = {
        {"deleted", [&] { page->Delete(page.Find("#a")); }},
        {"replaced",
         [&] { page->SetHtml(page.Find("#a"), "<p>", InsertPosition::ReplaceElement); }},
        {"content replaced",
         [&] { page->SetHtml(page.Body(), "<p>", InsertPosition::ReplaceContent); }},
        {"text set", [&] { page->SetText(page.Body(), "t"); }},
        {"page loaded", [&] { page->Load("<p>"); }},
    };
    for (const auto& row : rows) {
        page->Load("<div id=a><p id=b></p><p id=c><i id=d></i></p></div>");
        Attach("#d", "d");
        Attach("#c", "c1");
        Attach("#c", "c2");
        const ElementHandle b = page.Find("#b");
        Attach("#b", "b")->then = [&] {
            EXPECT_FALSE(page->IsKnown(b)) << "told before the operation was complete";
        };
        Attach("#a", "a");
        row.end();
        EXPECT_EQ(TakeLog(), "a b c1 c2 d ") << row.what;
        page->Load("");
        EXPECT_EQ(TakeLog(), "") << row.what;
    }
}

TEST_F(Handlers, AreToldWhenTheDocumentEndsAndFindNothingInIt)
{
    auto document = std::make_unique<Document>();
    const ElementHandle root = document->Root();
    document->Use(root);
    auto handler = std::make_shared<LoggingHandler>("h", log);
    auto late = std::make_shared<LoggingHandler>("late", log);
    document->AttachHandler(root, handler);
    Document* const ending = document.get();
    handler->then = [&] {
        EXPECT_EQ(ending->Root(), kNoElement);
        EXPECT_EQ(ending->AttachHandler(root, late), Result::UnknownElement);
        ending->Load("<p>");
        EXPECT_EQ(ending->Root(), kNoElement);
    };
    document.reset();
    EXPECT_EQ(TakeLog(), "h ");
    EXPECT_EQ(handler->lastElement, root);
    EXPECT_EQ(handler.use_count(), 1);
}

TEST_F(Handlers, MayChangeTheTreeAndAttachOthersWhileBeingTold)
{
    const auto first = Attach("#b", "b");
    Attach("#c", "c");
    Attach("#e", "e");
    first->then = [&] {
        page->SetHtml(page.Body(), "<p id=n></p>", InsertPosition::ReplaceContent);
        Attach("#n", "n");
        page->Load("<p id=m></p>");
        Attach("#m", "m");
    };
    page->Delete(page.Find("#a"));
    EXPECT_EQ(TakeLog(), "b e n c ");
    EXPECT_EQ(page.Names("p"), "m");
    page->Delete(page.Find("#m"));
    EXPECT_EQ(TakeLog(), "m ");
}

TEST_F(Handlers, AreFoundFromAnElementUpToTheRoot)
{
    const auto root = std::make_shared<LoggingHandler>("root", log);
    page->AttachHandler(page->Root(), root);
    const auto a = Attach("#a", "a");
    const auto c1 = Attach("#c", "c1");
    const auto c2 = Attach("#c", "c2");
    Attach("#b", "b");
    const auto path = page->HandlersOf(page.Find("#d"));
    ASSERT_EQ(path.size(), 4U);
    EXPECT_EQ(path[0].handler, c1);
    EXPECT_EQ(path[0].element, page.Find("#c"));
    EXPECT_EQ(path[1].handler, c2);
    EXPECT_EQ(path[2].handler, a);
    EXPECT_EQ(path[3].handler, root);
}

TEST_F(Handlers, OfAUsedElementEndWithItsPlaceInThePage)
{
    const ElementHandle c = page.Find("#c");
    page->Use(c);
    const auto handler = Attach("#c", "c");
    page->Delete(page.Find("#a"));
    EXPECT_EQ(TakeLog(), "c ");
    EXPECT_EQ(handler->lastElement, c);
    EXPECT_TRUE(page->HandlersOf(c).empty());
    page->Unuse(c);
    EXPECT_EQ(TakeLog(), "");
}

}  // namespace
}  // namespace HtmlEngine::Test
