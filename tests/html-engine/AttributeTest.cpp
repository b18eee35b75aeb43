#include "TestPage.h"

namespace HtmlEngine::Test {
namespace {

TEST(Attribute, WithALeadingPointIsAClass)
{
    const struct {
        std::string_view markup;
        std::string_view html;
    } rows[] = {
        {"<p .highlight annot-name=2_1>", "<p class=\"highlight\" annot-name=\"2_1\"></p>"},
        {"<p a=1 .b class='c  d' .e.f z>", "<p class=\"b c d e f\" a=\"1\" z=\"\"></p>"},
        {"<p class='b b' .b>", "<p class=\"b\"></p>"},
        {"<p .MixedCase class=AlsoMixed>", "<p class=\"MixedCase AlsoMixed\"></p>"},
        {"<p .x=y>", "<p class=\"x\"></p>"},
        {"<p . .. class=' '>", "<p .=\"\" ..=\"\"></p>"},
    };
    for (const auto& row : rows) {
        TestPage page(row.markup);
        EXPECT_EQ(page.BodyHtml(), row.html);
    }
}

TEST(Attribute, IsSetReadAndRemoved)
{
    TestPage page("<p id=p Lang=EN .a></p>");
    const ElementHandle p = page.Find("p");
    EXPECT_EQ(page->Attribute(p, "LANG"), "EN");
    EXPECT_EQ(page->Attribute(p, "none"), std::nullopt);
    EXPECT_EQ(page->Attribute(p, "class"), "a");
    EXPECT_EQ(page->Attribute(p, ".a"), "");
    EXPECT_EQ(page->Attribute(p, ".b"), std::nullopt);

    const struct {
        std::string_view name;
        std::optional<std::string_view> value;
        std::string_view html;
    } steps[] = {
        {"lang", "\"<&\xC2\xA0\r", "<p class=\"a\" id=\"p\" lang=\"&quot;<&amp;&nbsp;&#13;\"></p>"},
        {"Title", "", "<p class=\"a\" id=\"p\" lang=\"&quot;<&amp;&nbsp;&#13;\" title=\"\"></p>"},
        {"lang", std::nullopt, "<p class=\"a\" id=\"p\" title=\"\"></p>"},
        {".b", "", "<p class=\"a b\" id=\"p\" title=\"\"></p>"},
        {".a", "", "<p class=\"a b\" id=\"p\" title=\"\"></p>"},
        {".a", std::nullopt, "<p class=\"b\" id=\"p\" title=\"\"></p>"},
        {"class", " x y x ", "<p class=\"x y\" id=\"p\" title=\"\"></p>"},
        {"class", "", "<p id=\"p\" title=\"\"></p>"},
        {"absent", std::nullopt, "<p id=\"p\" title=\"\"></p>"},
        {"title", "\xFF", "<p id=\"p\" title=\"\xEF\xBF\xBD\"></p>"},
    };
    for (const auto& step : steps) {
        const std::uint64_t before = page->ChangeCount();
        const std::string html = page.BodyHtml();
        const Result result = step.value ? page->SetAttribute(p, step.name, *step.value)
                                         : page->RemoveAttribute(p, step.name);
        EXPECT_EQ(result, Result::Success);
        EXPECT_EQ(page.BodyHtml(), step.html) << step.name;
        EXPECT_EQ(page->ChangeCount() > before, html != step.html) << step.name;
        TestPage again(page.BodyHtml());
        EXPECT_EQ(again->Attributes(again.Find("p")), page->Attributes(p));
    }
    for (const std::string_view name : {"", "a b", "a>", "a/b", "a=b", "a\"", "a\n", "<"}) {
        EXPECT_EQ(page->SetAttribute(p, name, "x"), Result::BadName) << name;
    }
}

TEST(Style, KeepsItsPropertiesInOrder)
{
    TestPage page(
        "<p style=\"Color: red; visibility:collapse;broken; background: url('a;b') ; x:\"></p>");
    const ElementHandle p = page.Find("p");
    EXPECT_EQ(page->Style(p, "color"), "red");
    EXPECT_EQ(page->Style(p, "BACKGROUND"), "url('a;b')");
    EXPECT_EQ(page->Style(p, "x"), "");
    EXPECT_EQ(page->SetStyle(p, "visibility", "visible"), Result::Success);
    EXPECT_EQ(page->Attribute(p, "style"),
              "color: red; visibility: visible; background: url('a;b');");
    const std::uint64_t changes = page->ChangeCount();
    EXPECT_EQ(page->SetStyle(p, "visibility", "visible"), Result::Success);
    EXPECT_EQ(page->ChangeCount(), changes);
    for (const auto& [property, value] : {std::pair{"", "x"},
                                          {"a b", "x"},
                                          {"a:", "x"},
                                          {"a", "x;y: z"},
                                          {"a", "'x"},
                                          {"a", "(x"}}) {
        EXPECT_EQ(page->SetStyle(p, property, value), Result::BadName) << property << ' ' << value;
    }
    for (const char* const property : {"color", "visibility", "background", "never"}) {
        EXPECT_EQ(page->SetStyle(p, property, ""), Result::Success);
    }
    EXPECT_EQ(page.BodyHtml(), "<p></p>");
}

TEST(Style, HidesWithEverythingInside)
{
    const struct {
        std::string_view style;
        bool hides;
    } rows[] = {
        {"visibility: collapse", true},
        {"VISIBILITY:Hidden !important", true},
        {"display: none", true},
        {"visibility: visible", false},
        {"display: block", false},
        {"", false},
        {"visibility: collapse; visibility: visible", false},
        {"content: 'display: none'", false},
    };
    for (const auto& row : rows) {
        TestPage page("<div style=\"" + std::string(row.style) +
                      "\"><p style='visibility: visible'><b></b></p></div>");
        EXPECT_EQ(page->IsHidden(page.Find("div")), row.hides) << row.style;
        EXPECT_EQ(page->IsHidden(page.Find("b")), row.hides) << row.style;
        EXPECT_FALSE(page->IsHidden(page.Body()));
    }
}

TEST(State, DisabledComesFromTheAttributeAndReachesInside)
{
    TestPage page("<div disabled><p></p></div><i></i>");
    const ElementHandle div = page.Find("div");
    const ElementHandle p = page.Find("p");
    EXPECT_EQ(page->State(div), ElementState::kDisabled);
    EXPECT_EQ(page->State(p), 0U);
    EXPECT_TRUE(page->IsDisabled(p));
    EXPECT_FALSE(page->IsDisabled(page.Find("i")));
    page->SetState(div, 0, ElementState::kDisabled);
    EXPECT_FALSE(page->IsDisabled(p));
    EXPECT_EQ(page->SetAttribute(div, "disabled", ""), Result::Success);
    EXPECT_EQ(page.Names(":disabled"), "div");
    page->RemoveAttribute(div, "disabled");
    EXPECT_EQ(page.Names(":disabled"), "");
}

TEST(State, BitsFollowTheirRules)
{
    using namespace ElementState;
    constexpr std::uint32_t kOther = 0x80000001;
    const struct {
        std::uint32_t set;
        std::uint32_t clear;
        std::uint32_t result;
    } steps[] = {
        {kExpanded, 0, kExpanded},
        {kCollapsed, 0, kCollapsed},
        {kExpanded | kOther, 0, kExpanded | kOther},
        {0, kExpanded, kOther},
        {kExpanded | kCollapsed, 0, kExpanded | kOther},
        {kHover, kHover | kOther, kExpanded | kHover},
        {0, ~0U, 0},
    };
    TestPage page("<p></p>");
    const ElementHandle p = page.Find("p");
    for (const auto& step : steps) {
        const std::uint64_t before = page->ChangeCount();
        const std::uint32_t old = page->State(p);
        EXPECT_EQ(page->SetState(p, step.set, step.clear), Result::Success);
        EXPECT_EQ(page->State(p), step.result);
        EXPECT_EQ(page->ChangeCount() > before, old != step.result);
    }
}

class SilentHandler : public AttachedHandler {
public:
    void OnDetached(ElementHandle) noexcept override {}
};

TEST(State, CurrentIsTakenFromTheElementUnderTheSameHandler)
{
    TestPage page(
        "<div id=c1><p id=a></p><p id=b></p></div>"
        "<div id=c2><p id=c></p><section><p id=d></p></section></div><p id=e></p><p id=f></p>");
    page->AttachHandler(page.Find("#c1"), std::make_shared<SilentHandler>());
    page->AttachHandler(page.Find("#c2"), std::make_shared<SilentHandler>());
    const ElementHandle detached = page.Find("#f");
    page->Use(detached);
    page->SetState(detached, ElementState::kCurrent, 0);
    page->Delete(detached);
    const struct {
        std::string_view element;
        std::string_view current;
    } steps[] = {
        {"#a", "a"},     {"#b", "b"},       {"#c", "b c"},    {"#d", "b d"},
        {"#e", "b d e"}, {"#c2", "b c2 d"}, {"#a", "a c2 d"}, {"#a", "a c2 d"},
    };
    for (const auto& step : steps) {
        page->SetState(page.Find(step.element), ElementState::kCurrent, 0);
        EXPECT_EQ(page.Names(":current"), step.current) << step.element;
    }
    page->SetState(detached, ElementState::kCurrent, 0);
    EXPECT_EQ(page.Names(":current"), "a c2 d");
    EXPECT_EQ(page->State(detached), ElementState::kCurrent);
}

}  // namespace
}  // namespace HtmlEngine::Test
