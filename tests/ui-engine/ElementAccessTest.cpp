// Element references and sets on an engine that counts uses and refuses, and a window that fails
// or dies. Every use that was begun has ended when a test is over.
#include "HostFixture.h"

#include "ui-engine/ElementAccess.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

using Fakes::Fake;
using Fakes::ThrownBy;
using Engine = UIHtmlEngine;

HtmlElementHandle Node(std::uintptr_t number)
{
    return reinterpret_cast<HtmlElementHandle>(number * 0x100);
}

constexpr ResultCode kRefused = 5;

class ElementAccess : public Fakes::HostFixture {
protected:
    // The tree: node 1 holds 11, 12 and 13; node 2 stands alone.
    ElementAccess()
    {
        engine_.On<Engine::UseElement>([this](HtmlElementHandle element) {
            if (refused_.contains(element)) {
                return kRefused;
            }
            ++uses_[element];
            return kResultOk;
        });
        engine_.On<Engine::UnuseElement>([this](HtmlElementHandle element) {
            EXPECT_GT(uses_[element]--, 0);
            return kRefused;
        });
        engine_.On<Engine::GetParent>([](HtmlElementHandle element, HtmlElementHandle* parent) {
            const auto number = reinterpret_cast<std::uintptr_t>(element) / 0x100;
            *parent = number > 10 ? Node(1) : nullptr;
            return kResultOk;
        });
        engine_.On<Engine::GetIndex>([](HtmlElementHandle element, std::uint32_t* index) {
            const auto number = reinterpret_cast<std::uintptr_t>(element) / 0x100;
            *index = number > 10 ? static_cast<std::uint32_t>(number - 11) : 0;
            return kResultOk;
        });
        engine_.On<Engine::GetChildCount>([this](HtmlElementHandle, std::uint32_t* count) {
            *count = 3;
            return childCountCode_;
        });
        engine_.On<Engine::GetNthChild>(
            [](HtmlElementHandle, std::uint32_t index, HtmlElementHandle* child) {
                EXPECT_LT(index, 3u);
                *child = Node(11 + index);
                return kResultOk;
            });
        window_.On<UIWnd::SelectElements>([this](HtmlElementHandle, const char* selector,
                                                 UIWnd::Collector collector, void* context) {
            selector_ = selector;
            for (const HtmlElementHandle element : matches_) {
                collector(context, element, engine_.Get());
            }
            return selectCode_;
        });
        LogSetters();
    }
    ~ElementAccess() override
    {
        for (const auto& [element, count] : uses_) {
            EXPECT_EQ(count, 0) << element;
        }
    }

    // Operations that change an element are logged, and fail: the set-wide ones ignore that.
    void LogSetters()
    {
        engine_.On<Engine::SetHtml>([this](HtmlElementHandle element, const std::uint8_t* html,
                                           std::uint32_t length, HtmlPosition position) {
            return Log(element, "html " + std::string(html, html + length) + " at " +
                                    std::to_string(static_cast<unsigned>(position)));
        });
        engine_.On<Engine::SetText>(
            [this](HtmlElementHandle element, const char16_t* text, std::uint32_t length) {
                EXPECT_NE(text, nullptr);
                return Log(element, "text of " + std::to_string(length));
            });
        engine_.On<Engine::SetStyleAttribute>(
            [this](HtmlElementHandle element, const char* name, const char16_t* value) {
                return Log(element,
                           std::string(name) +
                               (value == std::u16string(u"collapse") ? " collapse" : " another"));
            });
        engine_.On<Engine::SetState>([this](HtmlElementHandle element, std::uint32_t set,
                                            std::uint32_t clear, std::uint32_t now) {
            return Log(element, "+" + std::to_string(set) + " -" + std::to_string(clear) + " now " +
                                    std::to_string(now));
        });
        engine_.On<Engine::UpdateElement>([this](HtmlElementHandle element, std::uint32_t flags) {
            return Log(element, "update " + std::to_string(flags));
        });
        engine_.On<Engine::ScrollIntoView>(
            [this](HtmlElementHandle element, std::uint32_t) { return Log(element, "scroll"); });
        engine_.On<Engine::DeleteElement>(
            [this](HtmlElementHandle element) { return Log(element, "delete"); });
    }
    ResultCode Log(HtmlElementHandle element, const std::string& text)
    {
        log_.emplace_back(element, text);
        return kRefused;
    }

    ElementReference Reference(std::uintptr_t number)
    {
        return ElementReference({Node(number), engine_.Get()},
                                WeakServiceObjectPtr<UIWnd>(window_.Get()));
    }
    // What happened to the elements since the last question.
    using Events = std::vector<std::pair<HtmlElementHandle, std::string>>;
    Events TakeLog() { return std::exchange(log_, {}); }
    // Calls that the engine received, of any method.
    unsigned EngineCalls() const
    {
        unsigned calls = 0;
        for (unsigned slot = 0; slot < UIHtmlEngine::Catalogue::kMethodCount; ++slot) {
            calls += engine_->Calls(slot);
        }
        return calls;
    }
    unsigned Selections() const { return window_.Calls<UIWnd::SelectElements>(); }

    Fake<UIHtmlEngine> engine_;
    Fake<UIWnd> window_;
    std::map<HtmlElementHandle, int> uses_;
    std::set<HtmlElementHandle> refused_;
    std::vector<HtmlElementHandle> matches_;
    ResultCode selectCode_ = kResultOk;
    ResultCode childCountCode_ = kResultOk;
    std::string selector_;
    Events log_;
};

TEST_F(ElementAccess, QueryKeepsTheEnginesOrderAndThePlaceOfRefusedElements)
{
    matches_ = {Node(12), Node(2), Node(11), Node(12)};
    refused_ = {Node(2)};
    {
        const ElementSet set = Reference(1).SelectAll("li[annot-name=\"0_0\"]");
        EXPECT_EQ(selector_, "li[annot-name=\"0_0\"]");
        ASSERT_EQ(set.Size(), 4u);
        const HtmlElementHandle expected[] = {Node(12), nullptr, Node(11), Node(12)};
        for (std::size_t i = 0; i < 4; ++i) {
            EXPECT_EQ(set.Elements()[i].handle, expected[i]) << i;
            EXPECT_EQ(set.Elements()[i].engine, engine_.Get()) << i;
        }
        EXPECT_EQ(uses_[Node(12)], 2);
    }
    EXPECT_EQ(engine_.Calls<Engine::UnuseElement>(), 4u);  // three, and the root's
}

TEST_F(ElementAccess, SetOperationsReachEveryElementAndIgnoreItsCode)
{
    engine_->error = ErrorRecord{5, L"not to be looked at", "", "", 0};
    const std::string html = "<b>\xE2\x82\xAC</b>";
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(html.data());
    const auto length = static_cast<std::uint32_t>(html.size());
    using Operation = std::function<const ElementSet&(const ElementSet&)>;
    const auto put = [](const std::uint8_t* text, std::uint32_t size, HtmlPosition position) {
        return [=](const ElementSet& set) -> decltype(auto) {
            return set.SetHtml(text, size, position);
        };
    };
    const std::pair<Operation, std::string> rows[] = {
        {&ElementSet::Collapse, "visibility collapse"},
        {std::bind(&ElementSet::SetVisibility, std::placeholders::_1, u"visible"),
         "visibility another"},
        {std::bind(&ElementSet::ChangeState, std::placeholders::_1, 512, 1024), "+512 -1024 now 1"},
        {put(bytes, length, HtmlPosition::kInsertAfter), "html " + html + " at 5"},
        {put(bytes, 0, HtmlPosition::kInsertAfter), "text of 0"},
        {put(nullptr, 9, HtmlPosition::kReplaceContent), "text of 0"},
        {std::bind(&ElementSet::Update, std::placeholders::_1, 3), "update 3"},
    };
    matches_ = {Node(11), Node(2), Node(13)};
    refused_ = {Node(2)};
    const ElementSet set = Reference(1).SelectAll("li");
    const ElementSet none;
    for (const auto& [operation, expected] : rows) {
        SCOPED_TRACE(expected);
        EXPECT_EQ(&operation(set), &set);
        EXPECT_EQ(TakeLog(), (Events{{Node(11), expected}, {Node(13), expected}}));
        EXPECT_EQ(&operation(none), &none);
        EXPECT_TRUE(TakeLog().empty());
    }
    EXPECT_EQ(engine_->errorRequests, 0u);
    // Deleting is under the check rule.
    EXPECT_TRUE(ThrownBy([&] { set.Delete(); }));
    EXPECT_EQ(TakeLog(), (Events{{Node(11), "delete"}}));
}

TEST_F(ElementAccess, QueriesThatCannotMatchCallNothing)
{
    matches_ = {Node(11)};
    const ElementReference root = Reference(1);
    EXPECT_TRUE(root.SelectAll("").IsEmpty());
    EXPECT_TRUE(root.SelectAll(static_cast<const char*>(nullptr)).IsEmpty());
    EXPECT_TRUE(ElementReference().SelectAll("li").IsEmpty());
    EXPECT_TRUE(ElementReference({Node(1), nullptr}, root.Window()).SelectAll("li").IsEmpty());
    EXPECT_EQ(Selections(), 0u);
}

TEST_F(ElementAccess, AFailingQueryEndsTheUsesCollectedSoFar)
{
    const ElementReference root = Reference(1);
    matches_ = {Node(11), Node(12)};
    selectCode_ = 5;
    EXPECT_EQ(root.SelectAll("li").Size(), 2u);  // nobody tells of the failure
    window_->error = ErrorRecord{8, L"malformed selector", "", "", 0};
    const auto thrown = ThrownBy([&] { root.SelectAll("li["); });
    ASSERT_TRUE(thrown);
    EXPECT_EQ(thrown->Message(), L"malformed selector");
    EXPECT_EQ(uses_[Node(11)] + uses_[Node(12)], 0);
    EXPECT_EQ(window_->References(), 1u);
}

TEST_F(ElementAccess, SiblingsEndWithTheParentsChildren)
{
    struct Row {
        std::uintptr_t element;
        std::uintptr_t next;  // 0: none
        std::uintptr_t previous;
    };
    const Row rows[] = {{11, 12, 0}, {12, 13, 11}, {13, 0, 12}, {2, 0, 0}};
    const auto is = [](const ElementReference& found, std::uintptr_t number) {
        return found.AsElement().handle == (number == 0 ? nullptr : Node(number));
    };
    for (const bool parentRefused : {false, true}) {
        refused_ = parentRefused ? std::set{Node(1)} : std::set<HtmlElementHandle>();
        for (const Row& row : rows) {
            SCOPED_TRACE(testing::Message() << row.element << parentRefused);
            const ElementReference element = Reference(row.element);
            EXPECT_TRUE(is(element.NextSibling(), parentRefused ? 0 : row.next));
            EXPECT_TRUE(is(element.PreviousSibling(), parentRefused ? 0 : row.previous));
            EXPECT_EQ(uses_[Node(1)], 0);
        }
    }
    EXPECT_FALSE(ElementReference().NextSibling());
    EXPECT_FALSE(ElementReference().Parent());

    refused_.clear();
    childCountCode_ = 5;
    engine_->error = ErrorRecord{5, L"no count", "", "", 0};
    const ElementReference element = Reference(11);
    EXPECT_TRUE(ThrownBy([&] { element.NextSibling(); }));
    EXPECT_EQ(uses_[Node(1)], 0);
    EXPECT_EQ(element.Parent().AsElement().handle, Node(1));
}

TEST_F(ElementAccess, ReferencesHoldOneUseEach)
{
    ElementReference first = Reference(11);
    ElementReference second = Reference(12);
    EXPECT_EQ(uses_[Node(11)], 1);
    {
        const ElementReference copy = first;
        EXPECT_EQ(uses_[Node(11)], 2);
        const ElementReference moved = std::move(second);
        EXPECT_EQ(uses_[Node(12)], 1);
        EXPECT_FALSE(second);  // NOLINT: a reference moved from is empty
        ElementReference& alias = first;
        first = alias;
        EXPECT_EQ(uses_[Node(11)], 2);
        first = moved;
        EXPECT_EQ(uses_[Node(11)], 1);
        EXPECT_EQ(uses_[Node(12)], 2);
    }
    first = {};
    refused_ = {Node(13)};
    EXPECT_FALSE(Reference(13));
    EXPECT_FALSE(Reference(11).SameWindow(nullptr));
    EXPECT_FALSE(Reference(11).SameWindow(Node(13)));
}

TEST_F(ElementAccess, SingleElementOperationsFollowTheCheckRule)
{
    std::optional<std::u16string> value = std::u16string{u'a', 0, 0xD83D, u'z'};
    engine_.On<Engine::GetAttribute>(
        [&](HtmlElementHandle, const char* name, const char16_t** text, std::uint32_t* length) {
            EXPECT_STREQ(name, "annot-name");
            *text = value ? value->c_str() : nullptr;
            *length = value ? static_cast<std::uint32_t>(value->size()) : 0;
            return kResultOk;
        });
    engine_.On<Engine::SelectFirst>([](HtmlElementHandle, const char*, HtmlElementHandle* found) {
        *found = Node(12);
        return kResultOk;
    });
    engine_.On<Engine::SelectEnclosing>(
        [](HtmlElementHandle, const char*, HtmlElementHandle* found) {
            *found = nullptr;
            return kResultOk;
        });
    engine_.On<Engine::TestSelector>([](HtmlElementHandle, const char* selector, bool* matches) {
        *matches = selector[0] == 'l';
        return kResultOk;
    });
    const ElementReference element = Reference(11);
    bool present = false;
    EXPECT_EQ(element.Attribute("annot-name", &present),
              (std::wstring{L'a', 0, static_cast<wchar_t>(0xD83D), L'z'}));
    EXPECT_TRUE(present);
    value = u"";
    EXPECT_EQ(element.Attribute("annot-name", &present), L"");
    EXPECT_TRUE(present);
    value.reset();
    EXPECT_EQ(element.Attribute("annot-name", &present), L"");
    EXPECT_FALSE(present);
    EXPECT_EQ(element.SelectFirst("li").AsElement().handle, Node(12));
    EXPECT_FALSE(element.Enclosing("li"));
    EXPECT_TRUE(element.Matches("li"));
    EXPECT_FALSE(element.Matches("ul"));

    // Writing: nothing is said of a failure without a record.
    element.SetHtml("<i/>", HtmlPosition::kReplaceWhole);
    element.SetHtml("", HtmlPosition::kReplaceWhole);  // nothing to put there
    element.SetHtml("", HtmlPosition::kReplaceContent);
    element.SetText(L"\U0001F600");
    element.SetState(32, 0);
    element.SetStyle("visibility", u"collapse");
    element.Update(kUpdateMeasure);
    element.Delete();
    const Events expected{
        {Node(11), "html <i/> at 3"}, {Node(11), "text of 0"},           {Node(11), "text of 2"},
        {Node(11), "+32 -0 now 1"},   {Node(11), "visibility collapse"}, {Node(11), "update 1"},
        {Node(11), "delete"}};
    EXPECT_EQ(TakeLog(), expected);
    // With one, states and styles alone are let pass.
    engine_->error = ErrorRecord{5, L"", "", "", 0};
    EXPECT_TRUE(ThrownBy([&] { element.SetHtml("x", HtmlPosition::kReplaceContent); }));
    EXPECT_TRUE(ThrownBy([&] { element.SetText(L"x"); }));
    EXPECT_TRUE(ThrownBy([&] { element.Update(1); }));
    EXPECT_TRUE(ThrownBy([&] { element.Delete(); }));
    EXPECT_FALSE(ThrownBy([&] { element.SetState(32, 0); }));
    EXPECT_FALSE(ThrownBy([&] { element.SetStyle("a", u"b"); }));
    // What was scrolled for has happened already: told, and not thrown.
    engine_->error = ErrorRecord{5, L"no scrolling", "", "", 0};
    EXPECT_FALSE(ThrownBy([&] { element.ScrollIntoView(); }));
    EXPECT_EQ(TakeError()->message, L"no scrolling");
}

TEST_F(ElementAccess, AfterTheWindowDiedTheEngineIsNotTouched)
{
    matches_ = {Node(11), Node(12)};
    const ElementReference element = Reference(11);
    const ElementSet set = Reference(1).SelectAll("li");
    window_.Reset();
    const unsigned before = EngineCalls();
    bool present = true;
    EXPECT_TRUE(element.SelectAll("li").IsEmpty());
    EXPECT_FALSE(element.SelectFirst("li"));
    EXPECT_FALSE(element.Enclosing("li"));
    EXPECT_FALSE(element.Matches("li"));
    EXPECT_FALSE(element.Parent());
    EXPECT_FALSE(element.NextSibling());
    EXPECT_FALSE(element.PreviousSibling());
    EXPECT_FALSE(element.SameWindow(Node(12)));
    EXPECT_FALSE(ElementReference(element));
    EXPECT_EQ(element.Attribute("annot-name", &present), L"");
    EXPECT_FALSE(present);
    EXPECT_EQ(element.State(), 0u);
    element.SetHtml("x", HtmlPosition::kReplaceContent);
    element.SetHtml("", HtmlPosition::kReplaceContent);
    element.SetState(1, 2);
    element.ScrollIntoView();
    element.AttachHandler(nullptr);
    element.Delete();
    set.Collapse().ChangeState(1, 2).SetHtml(nullptr, 0, HtmlPosition::kReplaceContent).Delete();
    EXPECT_EQ(EngineCalls(), before);
    EXPECT_TRUE(TakeLog().empty());
    uses_.clear();  // the engine went with its window, and the uses with it
}

}  // namespace
