#include "documents/PdfText.h"
#include "service-common/UnicodeText.h"

#include <gtest/gtest.h>

namespace {

using namespace std::string_literals;
using Documents::DecodeDate;
using Documents::DecodeTextString;
using Documents::EncodeTextString;

struct TextRow {
    const char* name;
    std::string bytes;
    std::u16string text;
};

TEST(TextString, IsDecodedByItsMark)
{
    const TextRow rows[] = {
        {"empty", "", u""},
        {"ASCII", "plain (text)", u"plain (text)"},
        {"Latin range of PDFDocEncoding", "tap\xE9 \xE0", u"tapé à"},
        {"low PDFDocEncoding", "\x18\x19\x1A\x1B\x1C\x1D\x1E\x1F",
         u"\u02D8\u02C7\u02C6\u02D9\u02DD\u02DB\u02DA\u02DC"},
        {"high PDFDocEncoding", "\x80\x84\x8D\x8E\x92\x93\x9E\xA0", u"•—“”™ﬁž€"},
        {"bytes that stand for nothing", "\x7F\x9F\xAD", u"\uFFFD\uFFFD\uFFFD"},
        {"UTF-16 big-endian", "\xFE\xFF\x65\x87\x00\x61"s, u"文a"},
        {"UTF-16 little-endian", "\xFF\xFE\x87\x65\x61\x00"s, u"文a"},
        {"UTF-16, last byte odd", "\xFE\xFF\x00\x61\x00"s, u"a"},
        {"UTF-16 mark alone", "\xFE\xFF", u""},
        {"half a mark is no mark", "\xFE", u"þ"},
        {"surrogate pair", "\xFE\xFF\xD8\x3D\xDC\xDD"s, u"\U0001F4DD"},
        {"unpaired surrogates stay", "\xFE\xFF\x00\x61\xD8\x3D\x00\x62\xDC\xDD\x00\x63"s,
         u"a\xD83D\x62\xDCDD\x63"},
        {"high surrogate at the end", "\xFE\xFF\x00\x61\xD8\x3D"s, u"a\xD83D"},
        {"UTF-8 with mark", "\xEF\xBB\xBF\xE0\xB9\x84\xC3\xA9\xF0\x9F\x93\x9D", u"ไé\U0001F4DD"},
        {"UTF-8 without mark is PDFDocEncoding", "\xC3\xA9", u"Ã©"},
        {"UTF-8: overlong, surrogate, cut short", "\xEF\xBB\xBF\xC0\xAF|\xED\xA0\x80|\xE0\xB9",
         u"\uFFFD\uFFFD|\uFFFD\uFFFD\uFFFD|\uFFFD"},
        {"UTF-8: beyond Unicode", "\xEF\xBB\xBF\xF4\x90\x80\x80x", u"\uFFFD\uFFFD\uFFFD\uFFFDx"},
        {"line breaks and tabs stay", "a\rb\nc\r\nd\te", u"a\rb\nc\r\nd\te"},
        {"NULs and controls go", "a\0b\x01\x0B\x0C\x17z"s, u"abz"},
        {"NULs and controls go from UTF-16",
         "\xFE\xFF\x00\x61\x00\x00\x00\x85\x00\x7F\x00\x07\x00\x62"s, u"ab"},
        {"language escape", "\xFE\xFF\x00\x1B\x00\x65\x00\x6E\x00\x1B\x00\x61"s, u"a"},
        {"language escape in UTF-8",
         "\xEF\xBB\xBF"
         "a\x1B"
         "en-US\x1B"
         "b\x1B"
         "zh\x1B"
         "c",
         u"abc"},
        {"lone escape takes nothing along",
         "\xEF\xBB\xBF"
         "a\x1B"
         "en b",
         u"aen b"},
        {"escapes around a sentence",
         "\xEF\xBB\xBF\x1B"
         "not a language\x1B!",
         u"not a language!"},
    };
    for (const TextRow& row : rows) {
        EXPECT_EQ(DecodeTextString(row.bytes), row.text) << row.name;
    }
}

TEST(TextString, EncodedTextIsDecodedToItself)
{
    const std::u16string texts[] = {u"",
                                    u"plain\r\ntext",
                                    u"Größe",
                                    u"þÿ starts like a mark",
                                    u"文字 \U0001F4DD",
                                    u"lone \xD800 and \xDC00 halves",
                                    u"ï»¿"};
    for (const std::u16string& text : texts) {
        EXPECT_EQ(DecodeTextString(EncodeTextString(text)), text) << UnicodeText::ToUtf8(text);
    }
    EXPECT_EQ(EncodeTextString(u"plain"), "plain");
}

std::string Spelled(const _PDDateRec& date)
{
    std::string text;
    for (const int field : {int{date.year}, int{date.month}, int{date.day}, int{date.hour},
                            int{date.minute}, int{date.second}, int{date.utcOffsetHours}}) {
        text += std::to_string(field) + " ";
    }
    text.pop_back();
    return text;
}

TEST(Date, IsReadAsFarAsItCanBe)
{
    const std::string none = "0 0 0 0 0 0 0";
    const struct {
        std::string bytes;
        std::string fields;  // year month day hour minute second offset
    } rows[] = {
        {"D:20240501102030+02'00'", "2024 5 1 10 20 30 2"},
        {"D:20240501102030-08'30'", "2024 5 1 10 20 30 -8"},
        {"D:20240501102030+02'00", "2024 5 1 10 20 30 2"},
        {"D:20240501102030+02", "2024 5 1 10 20 30 2"},
        {"D:20240501102030+0200", "2024 5 1 10 20 30 2"},
        {"D:20240501102030-7", "2024 5 1 10 20 30 -7"},
        {"D:20240501102030Z", "2024 5 1 10 20 30 0"},
        {"D:20240501102030Z00'00'", "2024 5 1 10 20 30 0"},
        {"D:20240501102030", "2024 5 1 10 20 30 0"},
        {"D:20240501102030-00'30'", "2024 5 1 10 20 30 0"},
        {"D:20220110151234+00'240'", "2022 1 10 15 12 34 0"},
        {"D:20240501102030+99'00'", "2024 5 1 10 20 30 99"},
        {"20240501102030", "2024 5 1 10 20 30 0"},
        {"  D:20240501102030", "2024 5 1 10 20 30 0"},
        {"D:2024", "2024 1 1 0 0 0 0"},
        {"D:202407", "2024 7 1 0 0 0 0"},
        {"D:20240702", "2024 7 2 0 0 0 0"},
        {"D:2024070203", "2024 7 2 3 0 0 0"},
        {"D:202407020304", "2024 7 2 3 4 0 0"},
        {"D:202407-08'00'", "2024 7 1 0 0 0 -8"},
        {"D:2024071", "2024 7 1 0 0 0 0"},
        {"D:20241340256199", "2024 13 40 25 61 99 0"},
        {"D:01220011195504+00'208'", "122 0 11 19 55 4 0"},
        {"D:00000501", none.substr(0, 1) + " 5 1 0 0 0 0"},
        {"\xFE\xFF\0D\0:\0002\0000\0002\0004\0000\0007"s, "2024 7 1 0 0 0 0"},
        {"\xEF\xBB\xBF"
         "D:202407",
         "2024 7 1 0 0 0 0"},
        {"2024-05-01T10:20:30+02:00", "2024 5 1 10 20 30 2"},
        {"2024-05-01T10:20:30.123Z", "2024 5 1 10 20 30 0"},
        {"2024-05-01", "2024 5 1 0 0 0 0"},
        {"D:-001-1-1-1-1-1-00'30'", none},
        {"D:202", none},
        {"D:", none},
        {"", none},
        {"May 2024", none},
        {"D:+20240501", none},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Spelled(DecodeDate(row.bytes)), row.fields) << row.bytes;
    }
}

}  // namespace
