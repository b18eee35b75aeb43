// Text between UTF-16, wide strings and UTF-8. Expected wide text is spelled per system.
#include "service-common/WideText.h"

#include <gtest/gtest.h>

#include <string>

namespace {

constexpr bool kWideIsUtf16 = sizeof(wchar_t) == 2;

// A wide string of these units, whatever they mean.
std::wstring Units(std::initializer_list<unsigned> units)
{
    std::wstring text;
    for (const unsigned unit : units) {
        text.push_back(static_cast<wchar_t>(unit));
    }
    return text;
}

TEST(WideText, CrossesInEveryDirection)
{
    struct Row {
        const char* name;
        std::u16string utf16;
        std::wstring wide;  // where it is UTF-32
        std::string utf8;
    };
    const Row rows[] = {
        {"empty", u"", L"", ""},
        {"ascii", u"a\tb\r\n\x7F", L"a\tb\r\n\x7F", "a\tb\r\n\x7F"},
        {"NUL inside", {u'a', 0, u'b'}, {L'a', 0, L'b'}, {'a', 0, 'b'}},
        {"two bytes", u"\u0080\u07FF", L"\u0080\u07FF", "\xC2\x80\xDF\xBF"},
        {"three bytes", u"\u0800\uD7FF\uE000\uFFFF", L"\u0800\uD7FF\uE000\uFFFF",
         "\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF"},
        {"supplementary", u"\U00010000\U0001F600\U0010FFFF", L"\U00010000\U0001F600\U0010FFFF",
         "\xF0\x90\x80\x80\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF"},
        {"high alone",
         {u'a', 0xD83D, u'b'},
         Units({'a', 0xD83D, 'b'}),
         "a\xEF\xBF\xBD"
         "b"},
        {"low alone",
         {u'a', 0xDC00, u'b'},
         Units({'a', 0xDC00, 'b'}),
         "a\xEF\xBF\xBD"
         "b"},
        {"high at the end", {u'a', 0xDBFF}, Units({'a', 0xDBFF}), "a\xEF\xBF\xBD"},
        {"wrong order", {0xDE00, 0xD83D}, Units({0xDE00, 0xD83D}), "\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"high before a pair",
         {0xD83D, 0xD83D, 0xDE00},
         kWideIsUtf16 ? Units({0xD83D, 0xD83D, 0xDE00}) : Units({0xD83D, 0x1F600}),
         "\xEF\xBF\xBD\xF0\x9F\x98\x80"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(FromUtf16(row.utf16), row.wide);
        EXPECT_EQ(ToUtf16(row.wide), row.utf16);
        EXPECT_EQ(ToUtf8(row.wide), row.utf8);
        std::wstring appended = L"before ";
        AppendFromUtf16(appended, row.utf16);
        EXPECT_EQ(appended, L"before " + row.wide);
        std::string narrow = "before ";
        AppendUtf8(narrow, row.wide);
        EXPECT_EQ(narrow, "before " + row.utf8);
    }
}

TEST(WideText, TellsWhatItCannotHoldByAReplacement)
{
    EXPECT_EQ(FromUtf16(static_cast<const char16_t*>(nullptr)), L"");
    EXPECT_EQ(FromUtf16(u"ends\0here"), L"ends");
    EXPECT_EQ(FromAscii("a\x80\xFF"
                        "b"),
              L"a\uFFFD\uFFFDb");
    EXPECT_EQ(FromAscii(std::string_view("a\0b", 3)), std::wstring(L"a\0b", 3));
    if (!kWideIsUtf16) {
        EXPECT_EQ(ToUtf16(Units({0x110000, 0xFFFFFFFF})), u"\uFFFD\uFFFD");
        EXPECT_EQ(ToUtf8(Units({0x110000, 0xFFFFFFFF})), "\xEF\xBF\xBD\xEF\xBF\xBD");
    }
}

// Long texts are converted in parts: wherever those end, characters of every length stay whole.
TEST(WideText, LongTextsAreTheirCharactersInOrder)
{
    const std::wstring characters[] = {L"a", FromUtf16(u"\u00E9"), FromUtf16(u"\u20AC"),
                                       FromUtf16(u"\U0001F600"), L"sixteen letters and more"};
    for (std::size_t shift = 0; shift < 20; ++shift) {
        std::wstring wide(shift, L'.');
        std::string expected(shift, '.');
        for (std::size_t i = 0; i < 2000; ++i) {
            const std::wstring& character = characters[(i * i + i / 7) % std::size(characters)];
            wide += character;
            expected += ToUtf8(character);
        }
        ASSERT_EQ(ToUtf8(wide), expected) << shift;
    }
}

}  // namespace
