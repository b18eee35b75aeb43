#include "PageText.h"

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

}  // namespace

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
