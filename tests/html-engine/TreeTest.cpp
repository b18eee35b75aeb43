#include "TestPage.h"

namespace HtmlEngine::Test {
namespace {

TEST(Tree, IsAnEmptyPageBeforeAnythingIsLoaded)
{
    Document document;
    EXPECT_EQ(document.OuterHtml(document.Root()), "<html><head></head><body></body></html>");
    document.Load("\xEF\xBB\xBF<title>t</title><h1>x</h1>");
    EXPECT_EQ(document.OuterHtml(document.Root()),
              "<html><head><title>t</title></head><body><h1>x</h1></body></html>");
}

TEST(Tree, CountsElementsOnly)
{
    TestPage page(" a <p id=a></p><!-- c --><p id=b></p> t ");
    const ElementHandle body = page.Body();
    const ElementHandle a = page.Find("#a");
    const ElementHandle b = page.Find("#b");
    EXPECT_EQ(page->ChildCount(body), 2U);
    EXPECT_EQ(page->Child(body, 0), a);
    EXPECT_EQ(page->Child(body, 1), b);
    EXPECT_EQ(page->Child(body, 2), kNoElement);
    EXPECT_EQ(page->IndexInParent(b), 1U);
    EXPECT_EQ(page->NextSibling(a), b);
    EXPECT_EQ(page->NextSibling(b), kNoElement);
    EXPECT_EQ(page->PreviousSibling(b), a);
    EXPECT_EQ(page->PreviousSibling(a), kNoElement);
    EXPECT_EQ(page->Parent(a), body);
    EXPECT_EQ(page->Parent(page->Root()), kNoElement);
}

TEST(Tree, TakesHtmlInEveryPosition)
{
    const struct {
        InsertPosition position;
        std::string_view html;
        std::string_view body;
    } rows[] = {
        {InsertPosition::ReplaceContent, "<b>n</b>", "x<p id=\"a\"><b>n</b></p>y"},
        {InsertPosition::ReplaceContent, "", "x<p id=\"a\"></p>y"},
        {InsertPosition::InsertFirst, "n", "x<p id=\"a\">n1<i>2</i>3</p>y"},
        {InsertPosition::AppendLast, "<b>n</b>", "x<p id=\"a\">1<i>2</i>3<b>n</b></p>y"},
        {InsertPosition::ReplaceElement, "<u>n</u>m", "x<u>n</u>my"},
        {InsertPosition::ReplaceElement, "", "xy"},
        {InsertPosition::InsertBefore, "n<u></u>", "xn<u></u><p id=\"a\">1<i>2</i>3</p>y"},
        {InsertPosition::InsertAfter, "<u></u>n", "x<p id=\"a\">1<i>2</i>3</p><u></u>ny"},
        {InsertPosition::InsertAfter, "", "x<p id=\"a\">1<i>2</i>3</p>y"},
    };
    for (const auto& row : rows) {
        TestPage page("x<p id=a>1<i>2</i>3</p>y");
        const std::uint64_t before = page->ChangeCount();
        const std::string html = page.BodyHtml();
        EXPECT_EQ(page->SetHtml(page.Find("#a"), row.html, row.position), Result::Success);
        EXPECT_EQ(page.BodyHtml(), row.body);
        EXPECT_EQ(page->ChangeCount() > before, html != row.body);
        // Text that met text is one node: deleting around it leaves nothing odd behind.
        page->SetText(page.Body(), "t");
        EXPECT_EQ(page.BodyHtml(), "t");
    }
}

TEST(Tree, RefusesWhatHasNoPlace)
{
    TestPage page("<br id=b><p id=p></p>");
    const ElementHandle root = page->Root();
    const ElementHandle line = page.Find("#b");
    const ElementHandle detached = page.Find("#p");
    page->Use(detached);
    page->Delete(detached);
    const std::string html = page->OuterHtml(root);
    const std::uint64_t changes = page->ChangeCount();
    for (const InsertPosition position :
         {InsertPosition::ReplaceElement, InsertPosition::InsertBefore,
          InsertPosition::InsertAfter}) {
        EXPECT_EQ(page->SetHtml(root, "<p>", position), Result::NoPlace);
        EXPECT_EQ(page->SetHtml(detached, "<p>", position), Result::NoPlace);
    }
    for (const InsertPosition position :
         {InsertPosition::ReplaceContent, InsertPosition::InsertFirst,
          InsertPosition::AppendLast}) {
        EXPECT_EQ(page->SetHtml(line, "x", position), Result::NoContent);
    }
    EXPECT_EQ(page->SetText(line, "x"), Result::NoContent);
    EXPECT_EQ(page->Delete(root), Result::NoPlace);
    EXPECT_EQ(page->Delete(detached), Result::NoPlace);
    EXPECT_EQ(page->OuterHtml(root), html);
    EXPECT_EQ(page->ChangeCount(), changes);
}

TEST(Handle, EndsWithItsElementAndIsNeverGivenOutAgain)
{
    TestPage page("<p id=a></p>");
    const ElementHandle old = page.Find("#a");
    page->Delete(old);
    EXPECT_FALSE(page->IsKnown(old));
    for (int round = 0; round < 100; ++round) {
        page->SetHtml(page.Body(), "<p id=n></p>", InsertPosition::ReplaceContent);
        EXPECT_NE(page.Find("#n"), old);
    }
    for (const ElementHandle dead :
         {old, kNoElement, ElementHandle{0xFFFFFFFF}, ElementHandle{1} << 32, ~ElementHandle{0}}) {
        ElementHandle match = page.Body();
        bool matches = true;
        EXPECT_EQ(page->Use(dead), Result::UnknownElement);
        EXPECT_EQ(page->Unuse(dead), Result::UnknownElement);
        EXPECT_EQ(page->SetHtml(dead, "x", InsertPosition::AppendLast), Result::UnknownElement);
        EXPECT_EQ(page->SetText(dead, "x"), Result::UnknownElement);
        EXPECT_EQ(page->Delete(dead), Result::UnknownElement);
        EXPECT_EQ(page->SetAttribute(dead, "a", "b"), Result::UnknownElement);
        EXPECT_EQ(page->RemoveAttribute(dead, "a"), Result::UnknownElement);
        EXPECT_EQ(page->SetStyle(dead, "a", "b"), Result::UnknownElement);
        EXPECT_EQ(page->SetState(dead, 1, 0), Result::UnknownElement);
        EXPECT_EQ(page->AttachHandler(dead, nullptr), Result::UnknownElement);
        EXPECT_EQ(page->DetachHandler(dead, nullptr), Result::UnknownElement);
        EXPECT_EQ(page->SelectFirst(dead, "p", match), Result::UnknownElement);
        EXPECT_EQ(page->Closest(dead, "p", match), Result::UnknownElement);
        EXPECT_EQ(page->Matches(dead, "p", matches), Result::UnknownElement);
        EXPECT_EQ(match, kNoElement);
        EXPECT_FALSE(matches);
        EXPECT_EQ(page->Parent(dead), kNoElement);
        EXPECT_EQ(page->Child(dead, 0), kNoElement);
        EXPECT_EQ(page->ChildCount(dead), 0U);
        EXPECT_EQ(
            page->OuterHtml(dead) + page->TextContent(dead) + std::string(page->TagName(dead)), "");
        EXPECT_TRUE(page->HandlersOf(dead).empty());
    }
}

TEST(Handle, UsesKeepADetachedElementWithWhatIsInside)
{
    TestPage page("<div id=a><ul id=b><li id=c>x</li></ul></div>");
    const ElementHandle a = page.Find("#a");
    const ElementHandle b = page.Find("#b");
    const ElementHandle c = page.Find("#c");
    EXPECT_EQ(page->Unuse(b), Result::NotHeld);
    page->Use(b);
    page->Use(b);
    page->Use(c);
    page->Delete(a);
    EXPECT_FALSE(page->IsKnown(a));
    EXPECT_TRUE(page->IsKnown(b));
    EXPECT_FALSE(page->IsAttached(b));
    EXPECT_EQ(page->Parent(b), kNoElement);
    EXPECT_EQ(page->Parent(c), b);
    EXPECT_EQ(page->OuterHtml(b), "<ul id=\"b\"><li id=\"c\">x</li></ul>");
    EXPECT_EQ(page.Names("li"), "");

    // A detached tree can be changed and asked, and is no part of the page.
    page->SetHtml(b, "<li id=d></li>", InsertPosition::AppendLast);
    EXPECT_EQ(page.Names(b, ":root > li"), "c d");
    EXPECT_EQ(page.Names(b, "li:last-child, #c"), "c d");
    bool matches = true;
    EXPECT_EQ(page->Matches(c, ":root li", matches), Result::Success);
    EXPECT_FALSE(matches);

    EXPECT_EQ(page->Unuse(b), Result::Success);
    EXPECT_TRUE(page->IsKnown(b));
    EXPECT_EQ(page->Unuse(b), Result::Success);
    EXPECT_FALSE(page->IsKnown(b));
    EXPECT_TRUE(page->IsKnown(c));
    EXPECT_EQ(page->Parent(c), kNoElement);
    page->Unuse(c);
    EXPECT_FALSE(page->IsKnown(c));
}

TEST(Handle, OfAUsedElementSurvivesLoadingAnotherPage)
{
    TestPage page("<p id=a></p>");
    const ElementHandle a = page.Find("#a");
    const ElementHandle root = page->Root();
    page->Use(a);
    page->Load("<p id=b>");
    EXPECT_FALSE(page->IsKnown(root));
    EXPECT_TRUE(page->IsKnown(a));
    EXPECT_FALSE(page->IsAttached(a));
    EXPECT_EQ(page.Names("p"), "b");
}

}  // namespace
}  // namespace HtmlEngine::Test
