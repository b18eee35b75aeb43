#include <html-engine/internal/CharacterReference.h>

#include <algorithm>
#include <array>

#include <html-engine/internal/Ascii.h>

namespace HtmlEngine::Internal {

namespace {

constexpr std::uint32_t kReplacement = 0xFFFD;

// U+00A0 to U+00FF.
constexpr std::uint32_t kFirstLatin1 = 0xA0;
constexpr std::string_view kLatin1[] = {
    "nbsp",   "iexcl",  "cent",   "pound",  "curren", "yen",    "brvbar", "sect",   "uml",
    "copy",   "ordf",   "laquo",  "not",    "shy",    "reg",    "macr",   "deg",    "plusmn",
    "sup2",   "sup3",   "acute",  "micro",  "para",   "middot", "cedil",  "sup1",   "ordm",
    "raquo",  "frac14", "frac12", "frac34", "iquest", "Agrave", "Aacute", "Acirc",  "Atilde",
    "Auml",   "Aring",  "AElig",  "Ccedil", "Egrave", "Eacute", "Ecirc",  "Euml",   "Igrave",
    "Iacute", "Icirc",  "Iuml",   "ETH",    "Ntilde", "Ograve", "Oacute", "Ocirc",  "Otilde",
    "Ouml",   "times",  "Oslash", "Ugrave", "Uacute", "Ucirc",  "Uuml",   "Yacute", "THORN",
    "szlig",  "agrave", "aacute", "acirc",  "atilde", "auml",   "aring",  "aelig",  "ccedil",
    "egrave", "eacute", "ecirc",  "euml",   "igrave", "iacute", "icirc",  "iuml",   "eth",
    "ntilde", "ograve", "oacute", "ocirc",  "otilde", "ouml",   "divide", "oslash", "ugrave",
    "uacute", "ucirc",  "uuml",   "yacute", "thorn",  "yuml"};
static_assert(std::size(kLatin1) == 96);

struct Name {
    std::string_view name;
    std::uint32_t codePoint;
};

// With those of Latin-1, all names that are read without their semicolon too.
constexpr Name kMarkup[] = {{"amp", '&'},   {"lt", '<'},  {"gt", '>'}, {"quot", '"'},
                            {"AMP", '&'},   {"LT", '<'},  {"GT", '>'}, {"QUOT", '"'},
                            {"COPY", 0xA9}, {"REG", 0xAE}};
constexpr Name kOthers[] = {{"apos", '\''},    {"hellip", 0x2026}, {"mdash", 0x2014},
                            {"ndash", 0x2013}, {"bull", 0x2022},   {"lsquo", 0x2018},
                            {"rsquo", 0x2019}, {"ldquo", 0x201C},  {"rdquo", 0x201D},
                            {"trade", 0x2122}, {"euro", 0x20AC}};

// What numbers from 0x80 to 0x9F mean: windows-1252.
constexpr std::uint32_t kFirstWindows = 0x80;
constexpr std::array<std::uint16_t, 32> kWindows = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

/// More digits are left to others, who must know where their numbers end.
constexpr std::size_t kMostDigits = 7;

std::uint32_t CodePointOfNumber(std::uint32_t number)
{
    if (number >= kFirstWindows && number < kFirstWindows + kWindows.size()) {
        return kWindows[number - kFirstWindows];
    }
    const bool isSurrogate = number >= 0xD800 && number <= 0xDFFF;
    return number == 0 || isSurrogate || number > 0x10FFFF ? kReplacement : number;
}

/// The value of a digit in base 16, or 16 for what is none.
std::uint32_t DigitValue(char c)
{
    const char lower = ToAsciiLower(c);
    if (IsAsciiDigit(c)) {
        return static_cast<std::uint32_t>(c - '0');
    }
    return lower >= 'a' && lower <= 'f' ? static_cast<std::uint32_t>(lower - 'a') + 10 : 16;
}

CharacterReference ReadNumber(std::string_view text)
{
    const bool isHexadecimal = text.size() > 2 && ToAsciiLower(text[2]) == 'x';
    const std::uint32_t base = isHexadecimal ? 16 : 10;
    const std::size_t from = isHexadecimal ? 3 : 2;
    std::size_t at = from;
    std::uint32_t number = 0;
    for (; at < text.size() && at - from <= kMostDigits && DigitValue(text[at]) < base; ++at) {
        number = number * base + DigitValue(text[at]);
    }
    if (at == from || at - from > kMostDigits || at == text.size() || text[at] != ';') {
        return {CharacterReference::Kind::Unknown};
    }
    return {CharacterReference::Kind::Known, CodePointOfNumber(number), at + 1};
}

/// The code point of a name, or 0.
std::uint32_t CodePointOfName(std::string_view name)
{
    const auto isName = [&](const Name& row) { return row.name == name; };
    if (const auto row = std::ranges::find_if(kMarkup, isName); row != std::end(kMarkup)) {
        return row->codePoint;
    }
    if (const auto row = std::ranges::find(kLatin1, name); row != std::end(kLatin1)) {
        return kFirstLatin1 + static_cast<std::uint32_t>(row - std::begin(kLatin1));
    }
    const auto row = std::ranges::find_if(kOthers, isName);
    return row == std::end(kOthers) ? 0 : row->codePoint;
}

bool BeginsLikeAName(std::string_view word)
{
    const auto begins = [&](std::string_view name) { return word.starts_with(name); };
    return std::ranges::any_of(kMarkup, begins, &Name::name) ||
           std::ranges::any_of(kLatin1, begins);
}

}  // namespace

CharacterReference ReadCharacterReference(std::string_view text)
{
    if (text.size() > 1 && text[1] == '#') {
        return ReadNumber(text);
    }
    std::size_t at = 1;
    while (at < text.size() && (IsAsciiLetter(text[at]) || IsAsciiDigit(text[at]))) {
        ++at;
    }
    const std::string_view word = text.substr(1, at - 1);
    if (at < text.size() && text[at] == ';' && !word.empty()) {
        const std::uint32_t codePoint = CodePointOfName(word);
        return {codePoint == 0 ? CharacterReference::Kind::Unknown
                               : CharacterReference::Kind::Known,
                codePoint, at + 1};
    }
    return {BeginsLikeAName(word) ? CharacterReference::Kind::Unknown
                                  : CharacterReference::Kind::None};
}

}  // namespace HtmlEngine::Internal
