#include "service-common/EncodingConversion.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace {

std::string Narrow(std::u16string_view text)
{
    std::uint32_t needed = 0;
    const auto length = static_cast<std::uint32_t>(text.size());
    VxConvertUnicodeToACP(text.data(), length, nullptr, 0, &needed);
    std::string result(needed, '#');
    EXPECT_EQ(VxConvertUnicodeToACP(text.data(), length, result.data(), needed, &needed),
              kResultOk);
    return result;
}

std::u16string Wide(std::string_view text)
{
    std::uint32_t needed = 0;
    const auto length = static_cast<std::uint32_t>(text.size());
    VxConvertACPToUnicode(text.data(), length, nullptr, 0, &needed);
    std::u16string result(needed, u'#');
    EXPECT_EQ(VxConvertACPToUnicode(text.data(), length, result.data(), needed, &needed),
              kResultOk);
    return result;
}

TEST(EncodingLibrary, KeepsAsciiBothWays)
{
    const std::string text = "div.results-container li[annot-name=\"2_1\"]\r\n\t";
    EXPECT_EQ(Wide(text), std::u16string(text.begin(), text.end()));
    EXPECT_EQ(Narrow(Wide(text)), text);
    EXPECT_EQ(Narrow(std::u16string_view(u"a\0b", 3)), std::string("a\0b", 3));
}

TEST(EncodingLibrary, WritesNothingIntoABufferThatIsTooSmall)
{
    char buffer[4] = {'#', '#', '#', '#'};
    std::uint32_t needed = 77;
    EXPECT_EQ(VxConvertUnicodeToACP(u"abcd", 4, buffer, 3, &needed), kResultDeclined);
    EXPECT_EQ(needed, 4u);
    EXPECT_EQ(std::string(buffer, 4), "####");
    EXPECT_EQ(VxConvertUnicodeToACP(u"abcd", 4, buffer, 4, &needed), kResultOk);
    EXPECT_EQ(std::string(buffer, 4), "abcd");
    EXPECT_EQ(VxConvertUnicodeToACP(nullptr, 0, buffer, 4, &needed), kResultOk);
    EXPECT_EQ(needed, 0u);
    EXPECT_EQ(VxConvertUnicodeToACP(nullptr, 1, buffer, 4, &needed), kResultNullArgument);
    EXPECT_EQ(VxConvertACPToUnicode("a", 1, nullptr, 0, nullptr), kResultNullArgument);
}

TEST(EncodingLibrary, ReplacesUnpairedSurrogates)
{
    const std::vector<std::u16string> texts = {std::u16string(1, char16_t(0xD83D)),
                                               std::u16string(1, char16_t(0xDE00)),
                                               {u'a', char16_t(0xD83D), u'b'},
                                               {char16_t(0xDE00), char16_t(0xD83D)}};
    const std::vector<std::string> expected = {"?", "?", "a?b", "??"};
    for (std::size_t i = 0; i < texts.size(); ++i) {
        EXPECT_EQ(Narrow(texts[i]), expected[i]) << i;
    }
}

#if !defined(_WIN32)

TEST(EncodingLibrary, SpeaksUtf8)
{
    EXPECT_EQ(Narrow(u"\u00E9\u20AC\U0001F600"), "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
    EXPECT_EQ(Wide("\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"), u"\u00E9\u20AC\U0001F600");

    // Malformed bytes: each longest beginning of a sequence is one replacement character.
    const std::vector<std::pair<std::string, std::u16string>> rows = {
        {"\x80", u"\uFFFD"},
        {"a\xC3", u"a\uFFFD"},
        {"\xC3(", u"\uFFFD("},
        {"\xC0\x80", u"\uFFFD\uFFFD"},  // overlong
        {"\xE0\x80\x80", u"\uFFFD\uFFFD\uFFFD"},
        {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},  // a surrogate
        {"\xF0\x9F\x98", u"\uFFFD"},
        {"\xF0\x9F\x98(", u"\uFFFD("},
        {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},  // beyond U+10FFFF
        {"\xFF", u"\uFFFD"},
    };
    for (const auto& [bytes, text] : rows) {
        EXPECT_EQ(Wide(bytes), text);
    }
}

#else

TEST(EncodingLibrary, SpeaksTheAnsiCodePage)
{
    // Cyrillic is in no Western code page; a best fit would be another character.
    EXPECT_EQ(Narrow(u"\u0416"), "?");
    EXPECT_EQ(Wide(Narrow(u"\u00E9")), u"\u00E9");
}

#endif

}  // namespace
