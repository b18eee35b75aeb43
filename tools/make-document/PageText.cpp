#include "PageText.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <stdexcept>

namespace MakeDocument {

namespace {

std::string EscapedForContentStream(const std::string& text)
{
    std::string escaped;
    for (const char c : text) {
        if (c == '(' || c == ')' || c == '\\') {
            escaped.push_back('\\');
        }
        escaped.push_back(c);
    }
    return escaped;
}

// Widths of the characters from blank to tilde in thousandths of the size, as every viewer knows
// them of this font.
constexpr std::array<std::uint16_t, 95> kWidths{
    278,  278, 355, 556, 556, 889, 667, 191, 333, 333, 389, 584, 278, 333, 278, 278,  // blank to /
    556,  556, 556, 556, 556, 556, 556, 556, 556, 556, 278, 278, 584, 584, 584, 556,  // 0 to ?
    1015, 667, 667, 722, 722, 667, 611, 778, 722, 278, 500, 667, 556, 833, 722, 778,  // @ to O
    667,  778, 722, 667, 611, 722, 667, 944, 667, 667, 611, 278, 278, 278, 469, 556,  // P to _
    333,  556, 556, 500, 556, 556, 278, 556, 556, 222, 222, 500, 222, 833, 556, 556,  // ` to o
    556,  556, 333, 500, 278, 556, 500, 722, 500, 500, 500, 334, 260, 334, 584};      // p to ~

// The piece of a line from one character to another, from the descenders to the ascenders.
Documents::Quad PieceOf(const TextLine& line, std::size_t from, std::size_t to)
{
    const std::string_view text{line.text};
    const double left = line.x + TextWidth(text.substr(0, from), line.size);
    const double right = left + TextWidth(text.substr(from, to - from), line.size);
    const double bottom = line.y - 0.22 * line.size;
    const double top = line.y + 0.8 * line.size;
    return {{left, top}, {right, top}, {left, bottom}, {right, bottom}};
}

}  // namespace

double TextWidth(std::string_view text, double size)
{
    double width = 0;
    for (const char c : text) {
        width += kWidths.at(static_cast<std::size_t>(c - ' '));
    }
    return width * size / 1000;
}

std::vector<TextLine> BreakLines(const std::string& text, const TextLine& first, double width,
                                 double leading)
{
    std::vector<TextLine> lines{first};
    lines.back().text.clear();
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find(' ', at), text.size());
        const std::string word = text.substr(at, end - at);
        TextLine& line = lines.back();
        if (line.text.empty()) {
            line.text = word;
        } else if (TextWidth(line.text + ' ' + word, line.size) <= width) {
            line.text += ' ' + word;
        } else {
            lines.push_back({line.x, line.y - leading, line.size, word});
        }
        at = end + 1;
    }
    return lines;
}

std::vector<Documents::Quad> FindPhrase(const std::vector<TextLine>& lines, std::string_view phrase)
{
    std::string all;
    for (const TextLine& line : lines) {
        all += line.text + ' ';
    }
    const std::size_t begin = all.find(phrase);
    if (begin == std::string::npos) {
        throw std::invalid_argument("no line has the text \"" + std::string{phrase} + '"');
    }
    std::vector<Documents::Quad> quads;
    std::size_t start = 0;  // of the line
    for (const TextLine& line : lines) {
        const std::size_t from = std::max(begin, start);
        const std::size_t to = std::min(begin + phrase.size(), start + line.text.size());
        if (from < to) {
            quads.push_back(PieceOf(line, from - start, to - start));
        }
        start += line.text.size() + 1;
    }
    return quads;
}

QPDFObjectHandle MakeFont(QPDF& file)
{
    return file.makeIndirectObject(QPDFObjectHandle::parse(
        "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica /Encoding /WinAnsiEncoding >>"));
}

QPDFObjectHandle AppendPage(QPDF& file, const QPDFObjectHandle& font,
                            const std::vector<TextLine>& lines)
{
    std::string operators;
    for (const TextLine& line : lines) {
        operators += "BT /Body " + std::to_string(line.size) + " Tf " + std::to_string(line.x) +
                     ' ' + std::to_string(line.y) + " Td (" + EscapedForContentStream(line.text) +
                     ") Tj ET\n";
    }
    auto fonts = QPDFObjectHandle::newDictionary();
    fonts.replaceKey("/Body", font);
    auto resources = QPDFObjectHandle::newDictionary();
    resources.replaceKey("/Font", fonts);
    auto page = QPDFObjectHandle::newDictionary();
    page.replaceKey("/Type", QPDFObjectHandle::newName("/Page"));
    page.replaceKey("/MediaBox", QPDFObjectHandle::parse("[0 0 612 792]"));
    page.replaceKey("/Resources", resources);
    page.replaceKey("/Contents", QPDFObjectHandle::newStream(&file, operators));
    page = file.makeIndirectObject(page);
    file.addPage(page, false);
    return page;
}

}  // namespace MakeDocument
