// Pages with text that a viewer shows, for the files that make-document writes.
#pragma once

#include "documents/AnnotationProperties.h"

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>

#include <string>
#include <string_view>
#include <vector>

namespace MakeDocument {

// A line of a page: its position, its size in points, and its text in plain ASCII.
struct TextLine {
    double x;
    double y;
    double size;
    std::string text;
};

// Width in points.
double TextWidth(std::string_view text, double size);

// The words of a text in lines below each other that are no wider than `width`, unless a single
// word is. `first` is the first line's position and size.
std::vector<TextLine> BreakLines(const std::string& text, const TextLine& first, double width,
                                 double leading);

// What marks of a phrase cover: a quad for each line that it goes over. It is the first occurrence
// in the lines joined by blanks. Throws std::invalid_argument when there is none.
std::vector<Documents::Quad> FindPhrase(const std::vector<TextLine>& lines,
                                        std::string_view phrase);

// The font dictionary that all pages of a file share.
QPDFObjectHandle MakeFont(QPDF& file);

// Appends a Letter page that shows the lines.
QPDFObjectHandle AppendPage(QPDF& file, const QPDFObjectHandle& font,
                            const std::vector<TextLine>& lines);

}  // namespace MakeDocument
