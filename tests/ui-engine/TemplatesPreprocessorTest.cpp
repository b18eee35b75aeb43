// Templates: how they are loaded, which matches win, and how each failure reads.
#include "HostFixture.h"

#include "platform-libraries/ServiceProviderHost.h"
#include "service-common/WideText.h"
#include "ui-engine/UIEngine.SO.h"
#include "ui-engine/internal/TemplatesPreprocessor.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace {

using Fakes::Fake;
using Fakes::ThrownBy;

constexpr const wchar_t* kPath = L"document-panel-comments/%1%.htm";
constexpr const char* kDo =
    "details::TemplatesPreprocessorBase<struct details::UTF16_Bom_Strategy>::Do";
constexpr auto kErase = TemplateAction::kErase;
constexpr auto kReplace = TemplateAction::kReplace;
constexpr auto kBefore = TemplateAction::kInsertBefore;
constexpr auto kAfter = TemplateAction::kInsertAfter;

struct TestRule {
    std::wstring placeholder;
    TemplateAction action;
    std::wstring value;
};
using Rules = std::vector<TestRule>;

class Templates : public Fakes::HostFixture {
protected:
    Templates()
    {
        engine_.On<UIEngine::GetResources>([this](UIResources** out) {
            *out = hasResources_ ? resources_.HandOut() : nullptr;
            return engineCode_;
        });
        resources_.On<UIResources::GetResource>([this](const char16_t* path, UIResource** out) {
            EXPECT_EQ(FromUtf16(path), kPath);
            *out = hasResource_ ? resource_.HandOut() : nullptr;
            return kResultOk;
        });
        resource_.On<UIResource::GetData>([this](const std::uint8_t** data, std::uint32_t* size) {
            *data = bytes_.data();
            *size = size_;
            return kResultOk;
        });
        Provide(engine_);
    }

    void SetBytes(const std::vector<std::uint8_t>& bytes)
    {
        // At an odd address, as resources may be.
        buffer_.assign(1, 0);
        buffer_.insert(buffer_.end(), bytes.begin(), bytes.end());
        bytes_ = std::basic_string_view<std::uint8_t>(buffer_).substr(1);
        size_ = static_cast<std::uint32_t>(bytes.size());
    }
    void SetText(std::u16string_view text)
    {
        std::vector<std::uint8_t> bytes{0xFF, 0xFE};
        for (const char16_t unit : text) {
            bytes.push_back(static_cast<std::uint8_t>(unit & 0xFF));
            bytes.push_back(static_cast<std::uint8_t>(unit >> 8));
        }
        SetBytes(bytes);
    }
    static std::wstring Process(const Rules& rules)
    {
        TemplatesPreprocessor preprocessor(kPath);
        for (const TestRule& rule : rules) {
            preprocessor.AddRule(rule.placeholder, rule.action, rule.value);
        }
        return preprocessor.Do();
    }

    Fake<UIEngine> engine_;
    Fake<UIResources> resources_;
    Fake<UIResource> resource_;
    std::basic_string<std::uint8_t> buffer_;
    std::basic_string_view<std::uint8_t> bytes_;
    std::uint32_t size_ = 0;
    bool hasResources_ = true;
    bool hasResource_ = true;
    ResultCode engineCode_ = kResultOk;
};

TEST_F(Templates, AreFilledByRulesInOrder)
{
    struct Row {
        const char* name;
        std::u16string text;
        Rules rules;
        std::wstring expected;
    };
    const Row rows[] = {
        {"replaced everywhere",
         u"PAGE_INDEX-PAGE_INDEX",
         {{L"PAGE_INDEX", kReplace, L"7"}},
         L"7-7"},
        {"erased whatever the value", u"<A>", {{L"A", kErase, L"ignored"}}, L"<>"},
        {"value before", u"<A>", {{L"A", kBefore, L"v"}}, L"<vA>"},
        {"value after", u"<A>", {{L"A", kAfter, L"v"}}, L"<Av>"},
        {"a longer name added first wins",
         u"ANNOT_TOOLTIP_ID ANNOT_TOOLTIP",
         {{L"ANNOT_TOOLTIP_ID", kReplace, L"id"}, {L"ANNOT_TOOLTIP", kReplace, L"text"}},
         L"id text"},
        {"a shorter name added first wins",
         u"ANNOT_TOOLTIP_ID",
         {{L"ANNOT_TOOLTIP", kReplace, L"text"}, {L"ANNOT_TOOLTIP_ID", kReplace, L"id"}},
         L"text_ID"},
        {"a match inside an applied one is skipped",
         u"xABCx",
         {{L"BC", kReplace, L"2"}, {L"AB", kReplace, L"1"}},
         L"x1Cx"},
        {"a skipped match frees what follows it",
         u"ABCD",
         {{L"AB", kReplace, L"1"}, {L"BC", kReplace, L"2"}, {L"CD", kReplace, L"3"}},
         L"13"},
        {"matches of one rule do not overlap", u"AAAAA", {{L"AA", kReplace, L"x"}}, L"xxA"},
        {"not even with one that is skipped",
         u"xAAAb",
         {{L"xA", kReplace, L"1"}, {L"AA", kReplace, L"2"}},
         L"1AAb"},
        {"values are not scanned again",
         u"A B",
         {{L"A", kReplace, L"B$&\\1%1%"}, {L"B", kReplace, L"A"}},
         L"B$&\\1%1% A"},
        {"a rule that matches nothing is no failure",
         u"A",
         {{L"Z", kReplace, L"z"}, {L"A", kErase, L""}},
         L""},
        {"expressions are expressions", u"a1b22c", {{L"[0-9]+", kReplace, L"#"}}, L"a#b#c"},
        {"alternatives", u"cat dog cow", {{L"cat|cow", kErase, L""}}, L" dog "},
        {"an escaped point", u"a.b axb", {{L"a\\.b", kReplace, L"!"}}, L"! axb"},
        {"look-behind sees what stands before", u"aX bX", {{L"(?<=b)X", kReplace, L"!"}}, L"aX b!"},
        {"empty matches write their value once each", u"ab", {{L"(?=b)", kBefore, L"|"}}, L"a|b"},
        {"brackets that open nothing are plain", u"a]b}", {{L"]b}", kErase, L""}}, L"a"},
        {"supplementary characters",
         u"\U0001F600A\U0001F600",
         {{L"A", kReplace, L"\U0001F601"}},
         L"\U0001F600\U0001F601\U0001F600"},
        {"a supplementary placeholder", u"x\U0001F600y", {{L"\U0001F600", kErase, L""}}, L"xy"},
        {"two ways of searching keep the order of the rules",
         u"ABC ABC",
         {{L"A[B]C", kReplace, L"1"}, {L"ABC", kReplace, L"2"}, {L"AB", kReplace, L"3"}},
         L"1 1"},
        {"NUL and line breaks stay",
         {u'a', 0, u'\r', u'\n', u'A'},
         {{L"A", kErase, L""}},
         {L'a', 0, L'\r', L'\n'}},
        {"unpaired surrogates stay",
         {0xD83D, u'A', 0xDE00},
         {{L"A", kReplace, L"-"}},
         {static_cast<wchar_t>(0xD83D), L'-', static_cast<wchar_t>(0xDE00)}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        SetText(row.text);
        EXPECT_EQ(Process(row.rules), row.expected);
    }
}

// Plain placeholders are searched for as text, others as expressions.
TEST_F(Templates, LiteralAndExpressionSearchesAgree)
{
    std::mt19937 random(20240501);
    const auto below = [&](std::size_t limit) {
        return static_cast<std::size_t>(random() % limit);
    };
    const auto word = [&](std::size_t longest) {
        std::wstring text;
        for (std::size_t i = below(longest) + 1; i > 0; --i) {
            text.push_back(L"AB_z0"[below(5)]);
        }
        return text;
    };
    int processed = 0;
    for (int round = 0; round < 500; ++round) {
        std::wstring text;
        for (std::size_t i = below(8) + 1; i > 0; --i) {
            text += word(12) + std::wstring(below(40), L"\u20ac< ~\U0001F600"[below(5)]);
        }
        SetText(ToUtf16(text));
        Rules literal;
        for (std::size_t i = below(6) + 1; i > 0; --i) {
            literal.push_back({word(3), static_cast<TemplateAction>(below(4)), word(5)});
        }
        Rules expressions = literal;
        for (TestRule& rule : expressions) {
            rule.placeholder = L"(?:" + rule.placeholder + L")";
        }
        std::wstring expected;
        if (const auto thrown = ThrownBy([&] { expected = Process(expressions); })) {
            EXPECT_EQ(ThrownBy([&] { Process(literal); })->Message(), thrown->Message());
        } else {
            EXPECT_EQ(Process(literal), expected) << "round " << round;
            ++processed;
        }
    }
    EXPECT_GT(processed, 300);
}

TEST_F(Templates, AreCheckedBeforeTheyAreRead)
{
    using Bytes = std::vector<std::uint8_t>;
    const std::wstring size = L"Fail to load htm-template \"" + std::wstring(kPath) + L"\"";
    const std::wstring mark = L"The htm-template \"" + std::wstring(kPath) +
                              L"\" should be saved using USC-2-Little-Endian (UTF-16-LE) encoding";
    const std::wstring nothing =
        L"Process htm-template \"" + std::wstring(kPath) + L"\" failed: Nothing to process";
    struct Row {
        const char* name;
        Bytes bytes;
        std::wstring message;
        const char* function;
    };
    const char* checkSize = "details::UTF16_Bom_Strategy::CheckSize";
    const char* checkBom = "details::UTF16_Bom_Strategy::CheckBom";
    const Row rows[] = {
        {"empty", {}, size, checkSize},
        {"1 byte", {0xFF}, size, checkSize},
        {"only a mark", {0xFF, 0xFE}, size, checkSize},
        {"UTF-8 with mark", {0xEF, 0xBB, 0xBF, 'A'}, mark, checkBom},
        {"UTF-16-BE", {0xFE, 0xFF, 0, 'A'}, mark, checkBom},
        {"half a mark", {0xFF, 0xFF, 'A', 0}, mark, checkBom},
        {"no mark", {'A', 0, 'A', 0}, mark, checkBom},
        {"mark and half a unit", {0xFF, 0xFE, 'A'}, nothing, kDo},
        {"no placeholder", {0xFF, 0xFE, 'B', 0}, nothing, kDo},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        SetBytes(row.bytes);
        const auto thrown = ThrownBy([] { Process({{L"A", kErase, L""}}); });
        ASSERT_TRUE(thrown);
        EXPECT_EQ(thrown->Code(), 0x40009u);
        EXPECT_EQ(thrown->Message(), row.message);
        EXPECT_EQ(thrown->Function(), row.function);
        EXPECT_EQ(thrown->File(), "include/ui-engine/internal/TemplatesPreprocessor");
        EXPECT_GT(thrown->Line(), 0u);
    }
    SetBytes({0xFF, 0xFE, 'A', 0, 'B', 0, 'A'});  // an odd last byte
    EXPECT_EQ(Process({{L"A", kReplace, L"x"}}), L"xB");
    SetBytes({0xFF, 0xFE, 'A', 0});
    EXPECT_EQ(ThrownBy([] { Process({}); })->Message(), nothing);
    bytes_ = {};
    size_ = 100;
    EXPECT_EQ(ThrownBy([] { Process({{L"A", kErase, L""}}); })->Message(), size);
    resource_->CutTable(0);
    EXPECT_EQ(ThrownBy([] { Process({{L"A", kErase, L""}}); })->Message(), size);
}

TEST_F(Templates, RulesThatCannotBeAppliedFailByTheirText)
{
    SetText(u"A B");
    const std::wstring prefix = L"Process htm-template \"" + std::wstring(kPath) + L"\" failed: ";
    const auto undefined = static_cast<TemplateAction>(4);
    const auto negative = static_cast<TemplateAction>(-1);
    for (const TemplateAction action : {undefined, negative}) {
        const auto thrown = ThrownBy([&] { Process({{L"A", action, L""}}); });
        ASSERT_TRUE(thrown);
        EXPECT_EQ(thrown->Message(), prefix + L"Undefined action type");
        EXPECT_EQ(thrown->Function(), kDo);
    }
    // An action that is never applied is never looked at.
    EXPECT_EQ(Process({{L"Z", undefined, L""}, {L"A B", kErase, L""}, {L" B", undefined, L""}}),
              L"");

    for (const wchar_t* malformed : {L"(", L"[A", L"*A", L"A{2,1}", L"\\"}) {
        TemplatesPreprocessor preprocessor(kPath);
        const auto thrown = ThrownBy([&] { preprocessor.AddRule(malformed, kReplace, L"x"); });
        ASSERT_TRUE(thrown) << ToUtf8(malformed);
        EXPECT_EQ(thrown->Code(), 0x40009u);
        EXPECT_EQ(thrown->Message().substr(0, prefix.size()), prefix);
        EXPECT_GT(thrown->Message().size(), prefix.size());
        // The failed rule leaves nothing behind.
        preprocessor.AddRule(L"A", kReplace, L"x");
        EXPECT_EQ(preprocessor.Do(), L"x B");
        EXPECT_EQ(preprocessor.Do(), L"x B");
    }
}

TEST_F(Templates, AreAskedForInEachRun)
{
    SetText(u"<A B>");
    TemplatesPreprocessor preprocessor(kPath);
    preprocessor.AddRule(L"A", kReplace, L"1");
    preprocessor.AddRule(L"[B]", kReplace, L"2");
    EXPECT_EQ(preprocessor.Do(), L"<1 2>");
    preprocessor.SetRule(L"A", kErase, L"");
    preprocessor.SetRule(L"[B]", kAfter, L"3");
    EXPECT_EQ(preprocessor.Do(), L"< B3>");

    // Other bytes at the same place, as many and fewer.
    SetText(u"<B A>");
    EXPECT_EQ(preprocessor.Do(), L"<B3 >");
    SetText(u"<B");
    EXPECT_EQ(preprocessor.Do(), L"<B3");
    SetText(u"<>");
    EXPECT_TRUE(ThrownBy([&] { preprocessor.Do(); }));

    SetText(u"<A B C>");
    EXPECT_EQ(preprocessor.Do(), L"< B3 C>");
    preprocessor.SetRule(L"C", kReplace, L"4");
    EXPECT_EQ(preprocessor.Do(), L"< B3 4>");
    hasResource_ = false;
    EXPECT_EQ(preprocessor.Do(), L"");
}

TEST_F(Templates, AreEmptyWhenTheHostHasNone)
{
    SetText(u"A");
    const Rules rules{{L"A", kReplace, L"x"}};
    EXPECT_EQ(Process(rules), L"x");
    hasResource_ = false;
    EXPECT_EQ(Process(rules), L"");
    hasResources_ = false;
    EXPECT_EQ(Process(rules), L"");
    ProvideAs("UIEngine", nullptr);
    EXPECT_EQ(Process(rules), L"");
}

TEST_F(Templates, PassOnTheHostsOwnFailures)
{
    SetText(u"A");
    engine_->error = ErrorRecord{0x123, L"no resources today", "", "", 0};
    engineCode_ = 5;
    const auto failed = ThrownBy([] { Process({{L"A", kErase, L""}}); });
    ASSERT_TRUE(failed);
    EXPECT_EQ(failed->Code(), 0x123u);
    EXPECT_EQ(failed->Message(), L"no resources today");
    EXPECT_EQ(resources_->References(), 1u);
    VxHostRefuseService("UIEngine", 0x10006, 0);
    EXPECT_EQ(ThrownBy([] {
                  Process({{L"A", kErase, L""}});
              })->Message(),
              L"Fail to query UIEngine service object: service object factory function failed.\n");
}

}  // namespace
