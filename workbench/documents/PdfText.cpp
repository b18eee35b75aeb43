#include "documents/PdfText.h"

#include "service-common/UnicodeText.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace Documents {

namespace {

constexpr char16_t kReplacement = 0xFFFD;
constexpr char16_t kEscape = 0x1B;

constexpr std::string_view kMarkUtf16Big{"\xFE\xFF", 2};
constexpr std::string_view kMarkUtf16Little{"\xFF\xFE", 2};
constexpr std::string_view kMarkUtf8{"\xEF\xBB\xBF", 3};

// PDFDocEncoding where it differs from Latin-1 (ISO 32000-1, annex D.3).
constexpr std::array<char16_t, 8> kPdfDocFrom18{0x02D8, 0x02C7, 0x02C6, 0x02D9,
                                                0x02DD, 0x02DB, 0x02DA, 0x02DC};
constexpr std::array<char16_t, 33> kPdfDocFrom80{
    0x2022, 0x2020, 0x2021, 0x2026, 0x2014, 0x2013, 0x0192, 0x2044, 0x2039, 0x203A,       0x2212,
    0x2030, 0x201E, 0x201C, 0x201D, 0x2018, 0x2019, 0x201A, 0x2122, 0xFB01, 0xFB02,       0x0141,
    0x0152, 0x0160, 0x0178, 0x017D, 0x0131, 0x0142, 0x0153, 0x0161, 0x017E, kReplacement, 0x20AC};

constexpr std::uint8_t Byte(char c) noexcept
{
    return static_cast<std::uint8_t>(c);
}

constexpr char16_t FromPdfDoc(std::uint8_t byte) noexcept
{
    if (byte >= 0x18 && byte <= 0x1F) {
        return kPdfDocFrom18[byte - 0x18u];
    }
    if (byte >= 0x80 && byte <= 0xA0) {
        return kPdfDocFrom80[byte - 0x80u];
    }
    return byte == 0x7F || byte == 0xAD ? kReplacement : char16_t{byte};
}

constexpr bool IsDroppedControl(char16_t unit) noexcept
{
    return (unit < 0x20 && unit != u'\t' && unit != u'\r' && unit != u'\n') ||
           (unit >= 0x7F && unit <= 0x9F);
}

constexpr bool IsLetter(char16_t unit) noexcept
{
    return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z');
}

// Length of the language escape that starts at `at`: an escape character, a language code of at
// least two letters, an escape character. 0 when there is none; a lone escape character must not
// take the text after it along.
std::size_t LanguageEscapeLength(std::u16string_view text, std::size_t at)
{
    constexpr std::size_t kLongestCode = 24;
    const std::size_t end = std::min(text.size(), at + kLongestCode + 2);
    std::size_t next = at + 1;
    while (next < end && (IsLetter(text[next]) || text[next] == u'-' ||
                          (text[next] >= u'0' && text[next] <= u'9'))) {
        ++next;
    }
    const bool isEscape = next < end && text[next] == kEscape && next - at >= 3 &&
                          IsLetter(text[at + 1]) && IsLetter(text[at + 2]);
    return isEscape ? next + 1 - at : 0;
}

void RemoveEscapesAndControls(std::u16string& text)
{
    const auto first = std::find_if(text.begin(), text.end(), IsDroppedControl);
    if (first == text.end()) {
        return;
    }
    auto kept = static_cast<std::size_t>(first - text.begin());
    for (std::size_t next = kept; next < text.size();) {
        const std::size_t escape = text[next] == kEscape ? LanguageEscapeLength(text, next) : 0;
        if (escape != 0) {
            next += escape;
        } else if (IsDroppedControl(text[next])) {
            ++next;
        } else {
            text[kept++] = text[next++];
        }
    }
    text.resize(kept);
}

std::u16string DecodeUtf16(std::string_view bytes, std::size_t highByte)
{
    std::u16string text(bytes.size() / 2, u'\0');
    for (std::size_t unit = 0; unit < text.size(); ++unit) {
        text[unit] = static_cast<char16_t>(Byte(bytes[2 * unit + highByte]) << 8 |
                                           Byte(bytes[2 * unit + 1 - highByte]));
    }
    return text;
}

std::u16string DecodePdfDoc(std::string_view bytes)
{
    std::u16string text(bytes.size(), u'\0');
    std::transform(bytes.begin(), bytes.end(), text.begin(),
                   [](char c) { return FromPdfDoc(Byte(c)); });
    return text;
}

// Reads digits of a date one field after the other.
class DateReader {
public:
    explicit DateReader(std::string_view text) : text_{text} {}

    // A field of exactly `digits` digits; unchanged when it is not there.
    bool Field(std::size_t digits, std::uint16_t& value)
    {
        if (text_.size() < digits || !std::all_of(text_.begin(), text_.begin() + digits, IsDigit)) {
            return false;
        }
        std::uint16_t read = 0;
        for (std::size_t digit = 0; digit < digits; ++digit) {
            read = static_cast<std::uint16_t>(read * 10 + (text_[digit] - '0'));
        }
        value = read;
        text_.remove_prefix(digits);
        return true;
    }

    bool Skip(char c)
    {
        const bool there = !text_.empty() && text_.front() == c;
        text_.remove_prefix(there ? 1 : 0);
        return there;
    }

    // Whole hours of a zone: a sign and one or two digits. Anything else is UTC.
    std::int16_t ZoneHours()
    {
        const bool behind = Skip('-');
        if (!behind && !Skip('+')) {
            return 0;
        }
        std::uint16_t hours = 0;
        if (!Field(2, hours)) {
            Field(1, hours);
        }
        return static_cast<std::int16_t>(behind ? -hours : hours);
    }

private:
    static bool IsDigit(char c) noexcept { return c >= '0' && c <= '9'; }

    std::string_view text_;
};

// The digits of "2024-05-01T10:00:00+02:00" in the order of a PDF date, zone included; some writers
// put the form of their metadata into dates. Empty for anything else.
std::string CompactIsoDate(std::string_view text)
{
    if (text.size() < 10 || text[4] != '-' || text[7] != '-') {
        return {};
    }
    std::string compact;
    compact.append(text.substr(0, 4)).append(text.substr(5, 2)).append(text.substr(8, 2));
    if (text.size() >= 19 && text[13] == ':' && text[16] == ':') {
        compact.append(text.substr(11, 2)).append(text.substr(14, 2)).append(text.substr(17, 2));
        const std::size_t zone = text.find_first_of("+-Z", 19);
        compact.append(text.substr(std::min(zone, text.size())));
    }
    return compact;
}

bool HasMark(std::string_view bytes) noexcept
{
    return bytes.starts_with(kMarkUtf16Big) || bytes.starts_with(kMarkUtf16Little) ||
           bytes.starts_with(kMarkUtf8);
}

}  // namespace

std::u16string DecodeTextString(std::string_view bytes)
{
    std::u16string text;
    if (bytes.starts_with(kMarkUtf16Big)) {
        text = DecodeUtf16(bytes.substr(2), 0);
    } else if (bytes.starts_with(kMarkUtf16Little)) {
        text = DecodeUtf16(bytes.substr(2), 1);
    } else if (bytes.starts_with(kMarkUtf8)) {
        text = UnicodeText::ToUtf16(bytes.substr(3));
    } else {
        text = DecodePdfDoc(bytes);
    }
    RemoveEscapesAndControls(text);
    return text;
}

std::string EncodeTextString(std::u16string_view text)
{
    const bool plain = std::all_of(text.begin(), text.end(), [](char16_t unit) {
        return unit < 0x7F && !IsDroppedControl(unit);
    });
    if (plain) {
        return {text.begin(), text.end()};
    }
    std::string bytes{kMarkUtf16Big};
    bytes.reserve(2 + 2 * text.size());
    for (const char16_t unit : text) {
        bytes.push_back(static_cast<char>(unit >> 8));
        bytes.push_back(static_cast<char>(unit & 0xFF));
    }
    return bytes;
}

_PDDateRec DecodeDate(std::string_view bytes)
{
    std::string narrow;
    if (HasMark(bytes)) {
        narrow = UnicodeText::ToUtf8(DecodeTextString(bytes));
        bytes = narrow;
    }
    bytes.remove_prefix(std::min(bytes.find_first_not_of(" \t\r\n"), bytes.size()));
    if (bytes.starts_with("D:")) {
        bytes.remove_prefix(2);
    }
    const std::string compact = CompactIsoDate(bytes);

    _PDDateRec date{};
    DateReader reader{compact.empty() ? bytes : std::string_view{compact}};
    if (!reader.Field(4, date.year)) {
        return {};
    }
    date.month = 1;
    date.day = 1;
    reader.Field(2, date.month) && reader.Field(2, date.day) && reader.Field(2, date.hour) &&
        reader.Field(2, date.minute) && reader.Field(2, date.second);
    date.utcOffsetHours = reader.ZoneHours();
    return date;
}

}  // namespace Documents
