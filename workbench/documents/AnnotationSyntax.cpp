#include "documents/AnnotationSyntax.h"

#include "documents/PdfText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <initializer_list>
#include <iterator>
#include <span>

namespace Documents {

namespace {

constexpr double kBorderWidth = 1.5;

// A rectangle with its corners in order, and points in it by shares of its sides.
struct Frame {
    explicit Frame(const _PDRect& rect)
        : left{std::min(rect.left, rect.right)},
          bottom{std::min(rect.bottom, rect.top)},
          width{std::max(rect.left, rect.right) - left},
          height{std::max(rect.bottom, rect.top) - bottom}
    {
    }

    Point At(double x, double y) const { return {left + x * width, bottom + y * height}; }

    // Narrower by the margin on each side, but never to less than half.
    Frame Inside(double margin) const
    {
        const double x = std::min(margin, width / 4);
        const double y = std::min(margin, height / 4);
        return Frame{{left + x, bottom + y, left + width - x, bottom + height - y}};
    }

    // The biggest square in the top left corner whose sides are no longer than this.
    Frame SquareAtTop(double longest) const
    {
        const double side = std::min({longest, width, height});
        return Frame{{left, bottom + height - side, left + side, bottom + height}};
    }

    double left;
    double bottom;
    double width;
    double height;
};

// Points by shares of the sides of a frame or of a quad, whose sides may run in any direction.
struct Plane {
    explicit Plane(const Frame& frame)
        : origin{frame.At(0, 0)}, right{frame.width, 0}, up{0, frame.height}
    {
    }

    // Of a quad whose appearance has its own origin.
    Plane(const Quad& quad, const Frame& place)
        : origin{quad.bottomLeft.x - place.left, quad.bottomLeft.y - place.bottom},
          right{quad.bottomRight.x - quad.bottomLeft.x, quad.bottomRight.y - quad.bottomLeft.y},
          up{quad.topLeft.x - quad.bottomLeft.x, quad.topLeft.y - quad.bottomLeft.y}
    {
    }

    Point At(double x, double y) const
    {
        return {origin.x + x * right.x + y * up.x, origin.y + x * right.y + y * up.y};
    }

    Point origin;
    Point right;
    Point up;
};

// Up to four digits behind the point; PDF knows neither exponents nor infinity.
std::string Number(double value)
{
    constexpr double kMost = 1e9;
    std::array<char, 32> digits{};
    const double written = std::isfinite(value) ? std::clamp(value, -kMost, kMost) : 0;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), written,
                                   std::chars_format::fixed, 4)
                         .ptr;
    std::string text{digits.data(), end};
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') {
        text.pop_back();
    }
    return text == "-0" ? "0" : text;
}

std::string Numbers(std::span<const Point> points)
{
    std::string text = "[";
    for (const Point& point : points) {
        text += Number(point.x) + ' ' + Number(point.y) + ' ';
    }
    text.back() = ']';
    return text;
}

std::string Numbers(std::initializer_list<Point> points)
{
    return Numbers(std::span{points.begin(), points.size()});
}

std::string Name(std::string_view name)
{
    std::string text = "/";
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte > 0x20 && byte < 0x7F &&
            std::string_view{"#()<>[]{}/%"}.find(c) == std::string::npos) {
            text += c;
        } else {
            std::array<char, 4> code{};
            std::snprintf(code.data(), code.size(), "#%02x", unsigned{byte});
            text += code.data();
        }
    }
    return text;
}

std::string String(std::string_view bytes)
{
    std::string text = "(";
    for (const char c : bytes) {
        if (c == '(' || c == ')' || c == '\\') {
            text += '\\';
        }
        text += c == '\r' ? "\\r" : std::string(1, c);
    }
    return text + ')';
}

// Content-stream operators, with points given by shares of a frame or of a quad in it.
class Drawing {
public:
    explicit Drawing(const Frame& frame) : Drawing{frame, Plane{frame}} {}
    Drawing(const Frame& frame, const Plane& plane) : frame_{frame}, plane_{plane} {}

    const Frame& Within() const { return frame_; }

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
        return MoveTo(x, y)
            .LineTo(x + width, y)
            .LineTo(x + width, y + height)
            .LineTo(x, y + height)
            .Raw("h");
    }
    const std::string& Operators() const { return operators_; }

private:
    Drawing& Operate(std::initializer_list<Point> points, std::string_view name)
    {
        for (const Point& point : points) {
            const Point place = plane_.At(point.x, point.y);
            operators_ += Number(place.x) + ' ' + Number(place.y) + ' ';
        }
        return Raw(name);
    }

    const Frame frame_;
    const Plane plane_;
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

// A sheet with lines of writing and one corner folded over.
void DrawNote(Drawing& drawing)
{
    drawing.Raw("0.35 0.3 0.05 RG 0.8 w 1 j")
        .MoveTo(0.1, 0.95)
        .LineTo(0.9, 0.95)
        .LineTo(0.9, 0.3)
        .LineTo(0.65, 0.05)
        .LineTo(0.1, 0.05)
        .Raw("b")
        .MoveTo(0.9, 0.3)
        .LineTo(0.65, 0.3)
        .LineTo(0.65, 0.05)
        .Raw("S");
    for (const double line : {0.75, 0.6, 0.45}) {
        drawing.MoveTo(0.25, line).LineTo(0.75, line).Raw("S");
    }
}

// Entries that the standard demands of a subtype beyond the common ones (ISO 32000-1, 12.5.6).
std::string QuadPoints(const std::vector<Quad>& quads)
{
    std::vector<Point> corners;
    for (const Quad& quad : quads) {
        // The order of viewers; the standard's own is read by none.
        corners.insert(corners.end(),
                       {quad.topLeft, quad.topRight, quad.bottomLeft, quad.bottomRight});
    }
    return "/QuadPoints " + Numbers(corners);
}

std::string OneQuad(const Frame& frame)
{
    return QuadPoints({{frame.At(0, 1), frame.At(1, 1), frame.At(0, 0), frame.At(1, 0)}});
}

std::string Border(const Frame& /*frame*/)
{
    return "/BS << /W " + Number(kBorderWidth) + " >>";
}

std::string Vertices(const Frame& frame)
{
    return "/Vertices " +
           Numbers({frame.At(0, 0), frame.At(0.2, 1), frame.At(0.8, 0.9), frame.At(1, 0)});
}

// All that the workbench knows of an annotation subtype.
struct Subtype {
    std::string_view name;
    bool listed = true;  // a markup annotation
    std::string_view colour = "1 0.8 0.1";
    std::string (*entries)(const Frame& frame) = [](const Frame&) { return std::string(); };
    // Null: viewers draw it by themselves. A drawing begins with the colour set for lines and for
    // areas, and lines 1.5 units wide.
    void (*draw)(Drawing& drawing) = nullptr;
    double margin = 0;  // for lines that would reach beyond the rectangle
};

// A word in bold capitals in the middle; its width is that at a size of 1.
void DrawWord(Drawing& drawing, std::string_view word, double width)
{
    constexpr double kHeightOfCapitals = 0.72;
    const Frame& frame = drawing.Within();
    const double size = std::min(0.6 * frame.height, 0.8 * frame.width / width);
    const Point start = frame.At(0.5, 0.5);
    drawing.Raw("BT /Bold " + Number(size) + " Tf " + Number(start.x - width * size / 2) + ' ' +
                Number(start.y - kHeightOfCapitals * size / 2) + " Td (" + std::string{word} +
                ") Tj ET");
}

void DrawAttachment(Drawing& drawing)
{
    drawing.Raw("0.3 0.3 0.3 RG 1 w").Box(0.05, 0.05, 0.9, 0.9).Raw("B");
    drawing.MoveTo(0.3, 0.3).LineTo(0.7, 0.5).LineTo(0.3, 0.7).Raw("s");
}

void DrawVertices(Drawing& drawing)
{
    drawing.MoveTo(0, 0).LineTo(0.2, 1).LineTo(0.8, 0.9).LineTo(1, 0);
}

constexpr Subtype kSubtypes[] = {
    {.name = "Text",
     .entries = [](const Frame&) { return std::string("/Name /Note"); },
     .draw =
         [](Drawing& d) {
             Drawing note{d.Within().SquareAtTop(20)};
             DrawNote(note);
             d.Raw(note.Operators());
         }},
    {.name = "Link", .listed = false},
    {.name = "FreeText",
     .entries = [](const Frame&) { return std::string("/DA (0 0 0.6 rg /Helv 11 Tf)"); }},
    {.name = "Line",
     .colour = "0.1 0.3 0.8",
     .entries =
         [](const Frame& f) {
             return "/L " + Numbers({f.At(0, 0), f.At(1, 1)});
         },
     .draw = [](Drawing& d) { d.MoveTo(0, 0).LineTo(1, 1).Raw("S"); },
     .margin = kBorderWidth / 2},
    {.name = "Square",
     .colour = "0.8 0.1 0.1",
     .entries = Border,
     .draw = [](Drawing& d) { d.Box(0, 0, 1, 1).Raw("S"); },
     .margin = kBorderWidth / 2},
    {.name = "Circle",
     .colour = "0.1 0.3 0.8",
     .entries = Border,
     .draw =
         [](Drawing& d) {
             DrawOval(d);
             d.Raw("s");
         },
     .margin = kBorderWidth / 2},
    {.name = "Polygon",
     .colour = "0.4 0.1 0.6",
     .entries = Vertices,
     .draw =
         [](Drawing& d) {
             DrawVertices(d);
             d.Raw("s");
         },
     .margin = kBorderWidth / 2},
    {.name = "PolyLine",
     .colour = "0.4 0.1 0.6",
     .entries = Vertices,
     .draw =
         [](Drawing& d) {
             DrawVertices(d);
             d.Raw("S");
         },
     .margin = kBorderWidth / 2},
    {.name = "Highlight",
     .colour = "1 0.9 0.2",
     .entries = OneQuad,
     .draw = [](Drawing& d) { d.Raw("/Multiply gs").Box(0, 0, 1, 1).Raw("f"); }},
    {.name = "Underline",
     .colour = "0.1 0.6 0.2",
     .entries = OneQuad,
     .draw = [](Drawing& d) { d.Raw("1 w").MoveTo(0, 0.08).LineTo(1, 0.08).Raw("S"); }},
    {.name = "Squiggly",
     .colour = "0.8 0.4 0",
     .entries = OneQuad,
     .draw =
         [](Drawing& d) {
             d.Raw("0.8 w");
             DrawSquiggle(d);
             d.Raw("S");
         }},
    {.name = "StrikeOut",
     .colour = "0.8 0.1 0.1",
     .entries = OneQuad,
     .draw = [](Drawing& d) { d.Raw("1 w").MoveTo(0, 0.5).LineTo(1, 0.5).Raw("S"); }},
    {.name = "Stamp",
     .colour = "0.8 0.1 0.1",
     .entries = [](const Frame&) { return std::string("/Name /Draft"); },
     .draw =
         [](Drawing& d) {
             d.Raw("3 w").Box(0.03, 0.06, 0.94, 0.88).Raw("S");
             DrawWord(d, "DRAFT", 3.388);
         }},
    {.name = "Caret",
     .colour = "0.1 0.3 0.8",
     .draw =
         [](Drawing& d) {
             d.MoveTo(0, 0)
                 .CurveTo({0.4, 0}, {0.5, 0.6}, {0.5, 1})
                 .CurveTo({0.5, 0.6}, {0.6, 0}, {1, 0})
                 .Raw("f");
         }},
    {.name = "Ink",
     .colour = "0.1 0.1 0.1",
     .entries =
         [](const Frame& f) {
             return "/InkList [" +
                    Numbers({f.At(0, 0.5), f.At(0.3, 0.9), f.At(0.6, 0.1), f.At(1, 0.5)}) + "]";
         },
     .draw =
         [](Drawing& d) {
             d.Raw("2 w 1 J").MoveTo(0, 0.5).CurveTo({0.3, 0.9}, {0.6, 0.1}, {1, 0.5}).Raw("S");
         },
     .margin = 1},
    {.name = "Popup", .listed = false},
    {.name = "FileAttachment", .colour = "0.9 0.9 0.6", .draw = DrawAttachment},
    {.name = "Sound", .colour = "0.9 0.9 0.6", .draw = DrawAttachment},
    {.name = "Widget", .listed = false},
    {.name = "TrapNet", .listed = false},
    {.name = "Redact",
     .colour = "0.8 0 0",
     .draw =
         [](Drawing& d) {
             d.Raw("1 g 1 w").Box(0, 0, 1, 1).Raw("B").MoveTo(0, 0).LineTo(1, 1).Raw("S");
         },
     .margin = 0.5},
};

// An unknown subtype has the defaults, and is not listed.
const Subtype& SubtypeNamed(std::string_view name)
{
    static constexpr Subtype kUnknown{.name = "", .listed = false};
    const auto* const found = std::ranges::find(kSubtypes, name, &Subtype::name);
    return found == std::end(kSubtypes) ? kUnknown : *found;
}

}  // namespace

std::vector<std::string_view> KnownSubtypes()
{
    std::vector<std::string_view> names;
    std::ranges::transform(kSubtypes, std::back_inserter(names), &Subtype::name);
    return names;
}

bool IsMarkupSubtype(std::string_view name) noexcept
{
    return SubtypeNamed(name).listed;
}

bool IsTextMarkupSubtype(std::string_view name) noexcept
{
    return SubtypeNamed(name).entries == &OneQuad;
}

_PDRect BoundsOf(const std::vector<Quad>& quads)
{
    const Point& first = quads.front().topLeft;
    _PDRect bounds{first.x, first.y, first.x, first.y};
    for (const Quad& quad : quads) {
        for (const Point& corner :
             {quad.topLeft, quad.topRight, quad.bottomLeft, quad.bottomRight}) {
            bounds = {std::min(bounds.left, corner.x), std::min(bounds.bottom, corner.y),
                      std::max(bounds.right, corner.x), std::max(bounds.top, corner.y)};
        }
    }
    return bounds;
}

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

std::string RectangleSyntax(const _PDRect& rect)
{
    const Frame frame{rect};
    return Numbers({frame.At(0, 0), frame.At(1, 1)});
}

std::string AnnotationEntries(const AnnotationProperties& properties)
{
    std::string entries = "/Type /Annot";
    const auto add = [&](bool present, const char* key, const auto& value) {
        if (present) {
            entries.append(" ").append(key).append(" ").append(value());
        }
    };
    const auto addText = [&](const char* key, const std::u16string& text) {
        add(!text.empty(), key, [&] { return String(EncodeTextString(text)); });
    };
    const auto addDate = [&](const char* key, const _PDDateRec& date) {
        add(date.year != 0, key, [&] { return String(EncodeDate(date)); });
    };
    add(!properties.subtype.empty(), "/Subtype", [&] { return Name(properties.subtype); });
    add(!properties.name.empty(), "/NM", [&] { return String(properties.name); });
    addText("/Contents", properties.contents);
    addText("/T", properties.title);
    addText("/Subj", properties.subject);
    addDate("/CreationDate", properties.created);
    addDate("/M", properties.modified);
    add(properties.flags != 0, "/F", [&] { return std::to_string(properties.flags); });
    if (properties.rect) {
        const Subtype& subtype = SubtypeNamed(properties.subtype);
        entries.append(" /Rect ").append(RectangleSyntax(*properties.rect));
        entries.append(" /C [").append(subtype.colour).append("] ");
        entries += properties.quads.empty() ? subtype.entries(Frame{*properties.rect})
                                            : QuadPoints(properties.quads);
    }
    return entries;
}

bool IsDrawn(const AnnotationProperties& properties)
{
    return properties.rect && SubtypeNamed(properties.subtype).draw != nullptr;
}

Appearance DrawAppearance(const AnnotationProperties& properties)
{
    if (!IsDrawn(properties)) {
        return {};
    }
    const Subtype& subtype = SubtypeNamed(properties.subtype);
    const Frame place{*properties.rect};
    const _PDRect box{0, 0, place.width, place.height};
    Drawing drawing{Frame{box}.Inside(subtype.margin)};
    const std::string colour{subtype.colour};
    drawing.Raw(colour + " RG " + colour + " rg " + Number(kBorderWidth) + " w");
    if (properties.quads.empty()) {
        subtype.draw(drawing);
    }
    for (const Quad& quad : properties.quads) {
        Drawing part{drawing.Within(), Plane{quad, place}};
        subtype.draw(part);
        drawing.Raw(part.Operators());
    }
    return {"/Type /XObject /Subtype /Form /BBox " + RectangleSyntax(box) +
                " /Resources << /ExtGState << /Multiply << /Type /ExtGState /BM /Multiply >> >>"
                " /Font << /Bold << /Type /Font /Subtype /Type1 /BaseFont /Helvetica-Bold >> >> >>",
            drawing.Operators()};
}

}  // namespace Documents
