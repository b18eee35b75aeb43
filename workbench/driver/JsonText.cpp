#include "driver/JsonText.h"

#include <array>

namespace Workbench {

namespace {

constexpr auto kNeedsEscape = [] {
    std::array<bool, 256> table{};
    for (std::size_t c = 0; c < 0x20; ++c) {
        table[c] = true;
    }
    table['"'] = table['\\'] = true;
    return table;
}();

void AppendEscaped(std::string& out, char c)
{
    switch (c) {
    case '"':
        out += "\\\"";
        return;
    case '\\':
        out += "\\\\";
        return;
    case '\n':
        out += "\\n";
        return;
    case '\r':
        out += "\\r";
        return;
    case '\t':
        out += "\\t";
        return;
    default:
        break;
    }
    constexpr const char* kDigits = "0123456789abcdef";
    out += "\\u00";
    out += kDigits[static_cast<unsigned char>(c) >> 4];
    out += kDigits[static_cast<unsigned char>(c) & 15];
}

}  // namespace

void AppendJsonText(std::string& out, std::string_view text)
{
    out += '"';
    std::size_t begin = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (kNeedsEscape[static_cast<unsigned char>(text[i])]) {
            out.append(text, begin, i - begin);
            AppendEscaped(out, text[i]);
            begin = i + 1;
        }
    }
    out.append(text, begin);
    out += '"';
}

}  // namespace Workbench
