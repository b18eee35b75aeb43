// Pages with text that a viewer shows, for the files that make-document writes.
#pragma once

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>

#include <string>
#include <vector>

namespace MakeDocument {

// A line of a page: its position, its size in points, and its text in plain ASCII.
struct TextLine {
    double x;
    double y;
    double size;
    std::string text;
};

// The font dictionary that all pages of a file share.
QPDFObjectHandle MakeFont(QPDF& file);

// Appends a Letter page that shows the lines.
QPDFObjectHandle AppendPage(QPDF& file, const QPDFObjectHandle& font,
                            const std::vector<TextLine>& lines);

}  // namespace MakeDocument
