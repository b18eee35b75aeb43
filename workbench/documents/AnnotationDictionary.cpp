#include "documents/AnnotationDictionary.h"

#include "documents/PdfText.h"

#include <qpdf/QUtil.hh>

#include <algorithm>
#include <array>
#include <cstdio>
#include <initializer_list>
#include <string_view>

namespace Documents {

namespace {

struct Point {
    double x;
    double y;
};

// The rectangle with its corners in order, and points in it by shares of its sides.
struct Frame {
    explicit Frame(const _PDRect& rect)
        : left{std::min(rect.left, rect.right)},
          bottom{std::min(rect.bottom, rect.top)},
          width{std::max(rect.left, rect.right) - left},
          height{std::max(rect.bottom, rect.top) - bottom}
    {
    }

    Point At(double x, double y) const { return {left + x * width, bottom + y * height}; }

    double left;
    double bottom;
    double width;
    double height;
};

std::string Number(double value)
{
    return QUtil::double_to_string(value, 4);
}

QPDFObjectHandle Numbers(std::initializer_list<Point> points)
{
    auto array = QPDFObjectHandle::newArray();
    for (const Point& point : points) {
        array.appendItem(QPDFObjectHandle::newReal(Number(point.x)));
        array.appendItem(QPDFObjectHandle::newReal(Number(point.y)));
    }
    return array;
}

QPDFObjectHandle Colour(double red, double green, double blue)
{
    auto array = QPDFObjectHandle::newArray();
    for (const double part : {red, green, blue}) {
        array.appendItem(QPDFObjectHandle::newReal(Number(part)));
    }
    return array;
}

QPDFObjectHandle Text(std::u16string_view text)
{
    return QPDFObjectHandle::newString(EncodeTextString(text));
}

// What the standard demands of a subtype beyond the common entries (ISO 32000-1, 12.5.6).
void AddSubtypeEntries(QPDFObjectHandle& dictionary, std::string_view subtype, const Frame& frame)
{
    const Point bottomLeft = frame.At(0, 0);
    const Point topRight = frame.At(1, 1);
    if (subtype == "Line") {
        dictionary.replaceKey("/L", Numbers({bottomLeft, topRight}));
    } else if (subtype == "Highlight" || subtype == "Underline" || subtype == "Squiggly" ||
               subtype == "StrikeOut") {
        dictionary.replaceKey(
            "/QuadPoints", Numbers({frame.At(0, 1), topRight, bottomLeft, frame.At(1, 0)}));
    } else if (subtype == "Ink") {
        auto strokes = QPDFObjectHandle::newArray();
        strokes.appendItem(
            Numbers({frame.At(0, 0.5), frame.At(0.3, 0.9), frame.At(0.6, 0.1), frame.At(1, 0.5)}));
        dictionary.replaceKey("/InkList", strokes);
    } else if (subtype == "Polygon" || subtype == "PolyLine") {
        dictionary.replaceKey(
            "/Vertices", Numbers({bottomLeft, frame.At(0.2, 1), frame.At(0.8, 0.9), frame.At(1, 0)}));
    } else if (subtype == "FreeText") {
        dictionary.replaceKey("/DA", QPDFObjectHandle::newString("0 0 0.6 rg /Helv 11 Tf"));
    } else if (subtype == "Text") {
        dictionary.replaceKey("/Name", QPDFObjectHandle::newName("/Note"));
    } else if (subtype == "Stamp") {
        dictionary.replaceKey("/Name", QPDFObjectHandle::newName("/Draft"));
    }
}

// Content-stream operators in the frame's own coordinates, from (0, 0) to (width, height).
class Drawing {
public:
    explicit Drawing(const Frame& frame) : frame_{frame} {}

    Drawing& Raw(std::string_view operators)
    {
        operators_.append(operators).append("\n");
        return *this;
    }
    Drawing& MoveTo(double x, double y) { return Operate({{x, y}}, "m"); }
    Drawing& LineTo(double x, double y) { return Operate({{x, y}}, "l"); }
    Drawing& CurveTo(Point first, Point second, Point end)
    {
        return Operate({first, second, end}, "c");
    }
    Drawing& Box(double x, double y, double width, double height)
    {
        return Operate({{x, y}, {width, height}}, "re");
    }
    const std::string& Operators() const { return operators_; }

private:
    Drawing& Operate(std::initializer_list<Point> points, std::string_view name)
    {
        for (const Point& point : points) {
            operators_ += Number(point.x * frame_.width) + ' ' + Number(point.y * frame_.height) + ' ';
        }
        return Raw(name);
    }

    const Frame& frame_;
    std::string operators_;
};

void DrawOval(Drawing& drawing)
{
    constexpr double kNear = 0.5 - 0.5 * 0.5523;
    constexpr double kFar = 1 - kNear;
    drawing.MoveTo(1, 0.5)
        .CurveTo({1, kFar}, {kFar, 1}, {0.5, 1})
        .CurveTo({kNear, 1}, {0, kFar}, {0, 0.5})
        .CurveTo({0, kNear}, {kNear, 0}, {0.5, 0})
        .CurveTo({kFar, 0}, {1, kNear}, {1, 0.5});
}

void DrawSquiggle(Drawing& drawing)
{
    constexpr int kWaves = 16;
    drawing.MoveTo(0, 0.05);
    for (int wave = 1; wave <= kWaves; ++wave) {
        drawing.LineTo(static_cast<double>(wave) / kWaves, wave % 2 == 0 ? 0.05 : 0.2);
    }
}

// Empty for a subtype that viewers draw by themselves.
std::string DrawAppearance(std::string_view subtype, const Frame& frame)
{
    Drawing drawing{frame};
    if (subtype == "Highlight") {
        drawing.Raw("/Multiply gs 1 0.9 0.2 rg").Box(0, 0, 1, 1).Raw("f");
    } else if (subtype == "Underline") {
        drawing.Raw("0.1 0.6 0.2 RG 1 w").MoveTo(0, 0.08).LineTo(1, 0.08).Raw("S");
    } else if (subtype == "StrikeOut") {
        drawing.Raw("0.8 0.1 0.1 RG 1 w").MoveTo(0, 0.5).LineTo(1, 0.5).Raw("S");
    } else if (subtype == "Squiggly") {
        drawing.Raw("0.8 0.4 0 RG 0.8 w");
        DrawSquiggle(drawing);
        drawing.Raw("S");
    } else if (subtype == "Square") {
        drawing.Raw("0.8 0.1 0.1 RG 1.5 w").Box(0.02, 0.04, 0.96, 0.92).Raw("S");
    } else if (subtype == "Circle") {
        drawing.Raw("0.1 0.3 0.8 RG 1.5 w");
        DrawOval(drawing);
        drawing.Raw("S");
    } else if (subtype == "Line") {
        drawing.Raw("0.1 0.3 0.8 RG 1.5 w").MoveTo(0, 0).LineTo(1, 1).Raw("S");
    } else if (subtype == "Polygon" || subtype == "PolyLine") {
        drawing.Raw("0.4 0.1 0.6 RG 1.5 w")
            .MoveTo(0, 0)
            .LineTo(0.2, 1)
            .LineTo(0.8, 0.9)
            .LineTo(1, 0)
            .Raw(subtype == "Polygon" ? "s" : "S");
    } else if (subtype == "Ink") {
        drawing.Raw("0.1 0.1 0.1 RG 2 w 1 J")
            .MoveTo(0, 0.5)
            .CurveTo({0.3, 0.9}, {0.6, 0.1}, {1, 0.5})
            .Raw("S");
    } else if (subtype == "Caret") {
        drawing.Raw("0.1 0.3 0.8 rg")
            .MoveTo(0, 0)
            .CurveTo({0.4, 0}, {0.5, 0.6}, {0.5, 1})
            .CurveTo({0.5, 0.6}, {0.6, 0}, {1, 0})
            .Raw("f");
    } else if (subtype == "Stamp") {
        drawing.Raw("0.8 0.1 0.1 RG 3 w").Box(0.03, 0.06, 0.94, 0.88).Raw("S");
        drawing.MoveTo(0.12, 0.5).LineTo(0.88, 0.5).Raw("S");
    } else if (subtype == "Redact") {
        drawing.Raw("0.8 0 0 RG 1 g 1 w").Box(0, 0, 1, 1).Raw("B").MoveTo(0, 0).LineTo(1, 1).Raw("S");
    } else if (subtype == "FileAttachment" || subtype == "Sound") {
        drawing.Raw("0.9 0.9 0.6 rg 0.3 0.3 0.3 RG 1 w").Box(0.05, 0.05, 0.9, 0.9).Raw("B");
        drawing.MoveTo(0.3, 0.3).LineTo(0.7, 0.5).LineTo(0.3, 0.7).Raw("s");
    }
    return drawing.Operators();
}

}  // namespace

std::string EncodeDate(const _PDDateRec& date)
{
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "D:%04u%02u%02u%02u%02u%02u", unsigned{date.year},
                  unsigned{date.month}, unsigned{date.day}, unsigned{date.hour},
                  unsigned{date.minute}, unsigned{date.second});
    std::string encoded = text.data();
    if (date.utcOffsetHours == 0) {
        return encoded + 'Z';
    }
    std::snprintf(text.data(), text.size(), "%+03d'00'", int{date.utcOffsetHours});
    return encoded + text.data();
}

QPDFObjectHandle MakeRectangle(const _PDRect& rect)
{
    const Frame frame{rect};
    return Numbers({frame.At(0, 0), frame.At(1, 1)});
}

QPDFObjectHandle MakeAnnotationDictionary(const AnnotationProperties& properties)
{
    auto dictionary = QPDFObjectHandle::newDictionary();
    dictionary.replaceKey("/Type", QPDFObjectHandle::newName("/Annot"));
    const auto add = [&](const char* key, const QPDFObjectHandle& value, bool present) {
        if (present) {
            dictionary.replaceKey(key, value);
        }
    };
    add("/Subtype", QPDFObjectHandle::newName("/" + properties.subtype),
        !properties.subtype.empty());
    add("/Contents", Text(properties.contents), !properties.contents.empty());
    add("/T", Text(properties.title), !properties.title.empty());
    add("/Subj", Text(properties.subject), !properties.subject.empty());
    add("/CreationDate", QPDFObjectHandle::newString(EncodeDate(properties.created)),
        properties.created.year != 0);
    add("/M", QPDFObjectHandle::newString(EncodeDate(properties.modified)),
        properties.modified.year != 0);
    add("/F", QPDFObjectHandle::newInteger(properties.flags), properties.flags != 0);
    if (properties.rect) {
        dictionary.replaceKey("/Rect", MakeRectangle(*properties.rect));
        dictionary.replaceKey("/C", Colour(1, 0.8, 0.1));
        AddSubtypeEntries(dictionary, properties.subtype, Frame{*properties.rect});
    }
    return dictionary;
}

void AddAppearance(QPDF& file, QPDFObjectHandle dictionary, const AnnotationProperties& properties)
{
    if (!properties.rect) {
        return;
    }
    const Frame frame{*properties.rect};
    const std::string operators = DrawAppearance(properties.subtype, frame);
    if (operators.empty()) {
        return;
    }
    auto stream = QPDFObjectHandle::newStream(&file, operators);
    auto form = stream.getDict();
    form.replaceKey("/Type", QPDFObjectHandle::newName("/XObject"));
    form.replaceKey("/Subtype", QPDFObjectHandle::newName("/Form"));
    form.replaceKey("/BBox", Numbers({{0, 0}, {frame.width, frame.height}}));
    form.replaceKey("/Resources",
                    QPDFObjectHandle::parse("<< /ExtGState << /Multiply << /Type /ExtGState "
                                            "/BM /Multiply >> >> >>"));
    auto appearances = QPDFObjectHandle::newDictionary();
    appearances.replaceKey("/N", stream);
    dictionary.replaceKey("/AP", appearances);
}

}  // namespace Documents
