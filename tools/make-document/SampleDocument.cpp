#include "SampleDocument.h"

#include "PageText.h"

#include "documents/AnnotationDictionary.h"
#include "documents/AnnotationSyntax.h"

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFWriter.hh>

#include <array>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace MakeDocument {

namespace {

using Documents::AnnotationProperties;

struct SampleComment {
    std::uint32_t page;
    const char* subtype;
    _PDRect rect;
    std::u16string_view contents;
    std::u16string_view title;
    std::u16string_view subject;
    _PDDateRec created;
    _PDDateRec modified;
    std::uint32_t flags = Documents::kFlagPrint;
    const char* phrase = nullptr;  // of the page's text, which it marks; then it has no rectangle
    std::optional<std::size_t> answered{};  // the comment that it replies to
};

constexpr std::uint32_t kPageCount = 6;
constexpr std::size_t kQuestion = 1;  // index of the comment that is answered

constexpr _PDDateRec kNoDate{};
constexpr _PDDateRec kMay{2024, 5, 1, 10, 0, 0, 2};
constexpr _PDDateRec kNextDay{2024, 5, 2, 9, 12, 0, 2};
constexpr _PDDateRec kJune{2024, 6, 12, 17, 45, 30, -7};
constexpr _PDDateRec kNewYear{2025, 1, 1, 0, 0, 1, 0};
constexpr _PDDateRec kImpossible{2024, 13, 40, 25, 61, 61, 0};

constexpr std::u16string_view kLongComment =
    u"This comment is long on purpose: it goes over many lines, so that the panel has to wrap it "
    u"and "
    u"the list has to scroll.\r\rIt has paragraphs, an indented line,\r    like this one,\rand it "
    u"ends with a question: is everything still readable when one comment alone fills the height "
    u"of "
    u"the panel, when its neighbours are a single word, and when the tooltip beside it has to find "
    u"a "
    u"place inside the window?\r\rOne more paragraph brings it to a length that reviewers reach "
    u"only "
    u"when they are very cross, or very thorough, or both at once.";

constexpr std::array<SampleComment, 45> kComments{{
    // Page 1: a text and what its readers say to it.
    {0,
     "Highlight",
     {},
     u"A good opening.",
     u"Clara Winter",
     u"Praise",
     kMay,
     kMay,
     Documents::kFlagPrint,
     "open when people have time to read"},
    {0,
     "Underline",
     {},
     u"Which source? The survey of 2019 or the one of 2023?",
     u"Clara Winter",
     u"Question",
     kMay,
     kMay,
     Documents::kFlagPrint,
     "Two visitors in three come after work"},
    {0,
     "StrikeOut",
     {},
     u"Says the same as the sentence before.",
     u"Tomás Rivera",
     u"",
     kMay,
     kNoDate,
     Documents::kFlagPrint,
     "The first hour of the morning is the quietest."},
    {0,
     "Squiggly",
     {},
     u"Spelling",
     u"",
     u"",
     kNoDate,
     kNoDate,
     Documents::kFlagPrint,
     "Attendence"},
    {0,
     "Caret",
     {},
     u"insert: \"in most weeks\"",
     u"Zoë O'Neill",
     u"Insertion",
     kJune,
     kJune,
     Documents::kFlagPrint,
     "The change needs no additional staff"},
    {0,
     "Text",
     {536, 566, 556, 586},
     u"The survey of 2023; its numbers are in table 2.\r\nI will add the reference.",
     u"Jörg Müller",
     u"Answer",
     kNextDay,
     kJune,
     Documents::kFlagPrint,
     nullptr,
     kQuestion},
    {0,
     "Text",
     {536, 540, 556, 560},
     u"Thank you. Then the sentence can stay.",
     u"Clara Winter",
     u"Answer",
     kJune,
     kJune,
     Documents::kFlagPrint,
     nullptr,
     kQuestion},
    {0,
     "Link",
     {},
     u"",
     u"",
     u"",
     kNoDate,
     kNoDate,
     Documents::kFlagPrint,
     "The drawings are on page 2."},
    // Page 2: shapes.
    {1,
     "Square",
     {72, 560, 200, 640},
     u"Crop to this frame",
     u"Layout",
     u"Rectangle",
     kJune,
     kJune},
    {1,
     "Circle",
     {240, 560, 368, 640},
     u"This one, not the other",
     u"Layout",
     u"Oval",
     kJune,
     kJune},
    {1, "Line", {400, 560, 520, 640}, u"Move up", u"Layout", u"Line", kJune, kJune},
    {1,
     "PolyLine",
     {72, 420, 200, 500},
     u"Path of the cable",
     u"Layout",
     u"Connected lines",
     kJune,
     kJune},
    {1, "Polygon", {240, 420, 368, 500}, u"Outline", u"Layout", u"Polygon", kJune, kJune},
    {1, "Ink", {400, 420, 520, 500}, u"", u"Layout", u"Pencil", kJune, kJune},
    {1,
     "Stamp",
     {72, 280, 240, 340},
     u"Draft, not for release",
     u"Office",
     u"Stamp",
     kNewYear,
     kNewYear},
    {1,
     "Redact",
     {280, 300, 440, 330},
     u"Remove the name",
     u"Office",
     u"Redaction",
     kNewYear,
     kNewYear},
    {1,
     "FreeText",
     {72, 180, 300, 230},
     u"Text that stands on the page itself",
     u"Office",
     u"Text box",
     kNewYear,
     kNewYear},
    {1,
     "FileAttachment",
     {340, 190, 364, 214},
     u"figures.csv",
     u"Office",
     u"Attachment",
     kNewYear,
     kNewYear},
    {1, "Sound", {400, 190, 424, 214}, u"Voice memo", u"Office", u"Recording", kNewYear, kNewYear},
    {1, "TrapNet", {500, 190, 524, 214}, u"", u"", u"", kNoDate, kNoDate},
    // Page 3 has no comments. Page 4: scripts.
    {3,
     "Text",
     {72, 640, 92, 660},
     u"Проверьте, пожалуйста, таблицу на странице 2.",
     u"Анна Иванова",
     u"Вопрос",
     kMay,
     kJune},
    {3,
     "Text",
     {72, 600, 92, 620},
     u"Grüße aus Köln: „schön“ statt \"schoen\", bitte.",
     u"Jörg Müller",
     u"Rechtschreibung",
     kMay,
     kJune},
    {3,
     "Highlight",
     {},
     u"请检查这一段。\r谢谢！",
     u"李雷",
     u"校对",
     kMay,
     kJune,
     Documents::kFlagPrint,
     "a mark in Chinese"},
    {3,
     "Text",
     {72, 560, 92, 580},
     u"この段落を確認してください。",
     u"山田 花子",
     u"確認",
     kMay,
     kJune},
    {3, "Text", {72, 520, 92, 540}, u"이 문장을 다시 써 주세요.", u"김민준", u"교정", kMay, kJune},
    {3,
     "Text",
     {72, 480, 92, 500},
     u"يرجى مراجعة هذه الفقرة (الصفحة 12).",
     u"محمد علي",
     u"مراجعة",
     kMay,
     kJune},
    {3, "Text", {72, 440, 92, 460}, u"נא לבדוק את הפסקה הזאת.", u"דנה לוי", u"הערה", kMay, kJune},
    {3, "Text", {72, 400, 92, 420}, u"โปรดตรวจสอบย่อหน้านี้", u"สมชาย", u"หมายเหตุ", kMay, kJune},
    {3, "Text", {72, 360, 92, 380}, u"कृपया इस अनुच्छेद की जाँच करें।", u"प्रिया", u"टिप्पणी", kMay, kJune},
    {3,
     "Text",
     {72, 320, 92, 340},
     u"Παρακαλώ ελέγξτε το κείμενο.",
     u"Ελένη",
     u"Ερώτηση",
     kMay,
     kJune},
    {3,
     "Underline",
     {},
     u"Outside the basic plane: \U0001D11E \U0001F4DD \U00020BB7",
     u"Zoë O'Neill",
     u"",
     kMay,
     kJune,
     Documents::kFlagPrint,
     "a mark with rare characters"},
    // Page 5: lengths, markup in contents, dates.
    {4,
     "Text",
     {72, 640, 92, 660},
     kLongComment,
     u"A very thorough reviewer with a long name",
     u"A subject that is long as well, to see where it is cut",
     kMay,
     kJune},
    {4, "Text", {72, 600, 92, 620}, u"!", u"B", u"C", kMay, kJune},
    {4,
     "Text",
     {72, 560, 92, 580},
     u"Markup: <u>underlined</u>, x<sup>2</sup>, H<sub>2</sub>O",
     u"Clara Winter",
     u"Markup",
     kMay,
     kJune},
    {4,
     "Text",
     {72, 520, 92, 540},
     u"Not markup: a < b, c > d & e",
     u"Clara Winter",
     u"Characters",
     kMay,
     kJune},
    {4, "Text", {72, 480, 92, 500}, u"\r", u"Clara Winter", u"Only a line break", kMay, kJune},
    {4,
     "Text",
     {72, 440, 92, 460},
     u"Dates that do not exist: both rows are hidden",
     u"Clara Winter",
     u"Dates",
     kImpossible,
     kImpossible},
    {4,
     "Text",
     {72, 400, 92, 420},
     u"Averyveryverylongwordthathasnoplaceatwhichitcouldbebrokenandgoesonandonandon",
     u"Clara Winter",
     u"One word",
     kMay,
     kJune},
    {4,
     "Text",
     {72, 360, 92, 380},
     u"one\rtwo\nthree\r\nfour\r\rsix",
     u"Clara Winter",
     u"Line breaks of every kind",
     kMay,
     kJune},
    {4,
     "Highlight",
     {},
     u"",
     u"Clara Winter",
     u"Highlight without contents",
     kMay,
     kMay,
     Documents::kFlagPrint,
     "A highlight that has nothing to say"},
    // Page 6: protected, hidden and unlisted ones.
    {5,
     "Square",
     {72, 600, 200, 660},
     u"Locked: it cannot be deleted",
     u"Office",
     u"Locked",
     kMay,
     kJune,
     Documents::kFlagPrint | Documents::kFlagLocked},
    {5,
     "Square",
     {240, 600, 368, 660},
     u"Read-only: it cannot be deleted",
     u"Office",
     u"Read-only",
     kMay,
     kJune,
     Documents::kFlagPrint | Documents::kFlagReadOnly},
    {5,
     "Text",
     {72, 520, 92, 540},
     u"Hidden: no list shows it",
     u"Office",
     u"Hidden",
     kMay,
     kJune,
     Documents::kFlagHidden},
    {5,
     "Text",
     {72, 480, 92, 500},
     u"Not for the screen: no list shows it",
     u"Office",
     u"NoView",
     kMay,
     kJune,
     Documents::kFlagPrint | Documents::kFlagNoView},
    {5, "Text", {120, 520, 140, 540}, u"The last comment", u"Office", u"", kMay, kJune},
}};

constexpr double kTextWidth = 430;
constexpr double kTextSize = 11;
constexpr double kHeadingSize = 14;
constexpr double kLeading = 17;

// Of each page the title and the paragraphs, a line each. A paragraph that begins with a # is a
// heading.
constexpr std::array<const char*, kPageCount> kPageTexts{
    "Opening hours of the town library\n"
    "Report to the council, second draft\n"
    "The library wants to be open when people have time to read. This report compares what "
    "visitors told us with what the doors have counted, and proposes hours for the coming year.\n"
    "#What visitors say\n"
    "Two visitors in three come after work. Most of them would stay longer if the reading room "
    "closed at nine instead of seven, and every fifth would come more often. Families ask for "
    "Sunday mornings above all.\n"
    "#What the doors have counted\n"
    "On weekdays the busiest hour lies between five and six. Before ten in the morning fewer than "
    "twenty people enter, on Mondays fewer than five. The first hour of the morning is the "
    "quietest. Attendence falls during the holidays and recovers in September.\n"
    "#Proposal\n"
    "From January the library opens at eleven and closes at nine, from Tuesday to Saturday. On "
    "Sundays the reading room is open from ten to two. The change needs no additional staff, and "
    "the costs of heating and light stay within those of the past year.\n"
    "The drawings are on page 2.",
    "Shapes, stamps and attachments\n"
    "Rectangle, oval, line; connected lines, polygon, pencil; stamp, redaction; text box, "
    "attachment, sound.",
    "A page without comments\n"
    "The list leaves it out, and the page after it keeps its number.",
    "Comments in many scripts",
    "Short and long comments, markup, dates",
    "Protected and hidden annotations",
};

struct Label {
    std::uint32_t page;
    double y;
    const char* text;
};

// Lines beside notes.
constexpr Label kLabels[] = {
    {3, 646, "A note in Russian"},
    {3, 606, "A note in German, and a mark in Chinese"},
    {3, 566, "A note in Japanese"},
    {3, 526, "A note in Korean"},
    {3, 486, "A note in Arabic"},
    {3, 446, "A note in Hebrew"},
    {3, 406, "A note in Thai"},
    {3, 366, "A note in Hindi"},
    {3, 326, "A note in Greek, and a mark with rare characters"},
    {4, 646, "A long comment"},
    {4, 606, "A single character"},
    {4, 566, "Markup"},
    {4, 526, "Characters that markup uses"},
    {4, 486, "Nothing but a line break"},
    {4, 446, "Dates that do not exist"},
    {4, 406, "One long word"},
    {4, 366, "Line breaks"},
    {4, 326, "A highlight that has nothing to say"},
};

std::vector<TextLine> LinesOf(std::uint32_t page)
{
    std::istringstream texts(kPageTexts[page]);
    std::string text;
    std::getline(texts, text);
    std::vector<TextLine> lines{{72, 720, 20, text}};
    double y = 690;
    while (std::getline(texts, text)) {
        const bool isHeading = text.front() == '#';
        y -= isHeading ? kLeading / 2 : 0;
        const TextLine first{72, y, isHeading ? kHeadingSize : kTextSize, {}};
        for (TextLine& line :
             BreakLines(isHeading ? text.substr(1) : text, first, kTextWidth, kLeading)) {
            y = line.y;
            lines.push_back(std::move(line));
        }
        y -= isHeading ? 1.25 * kLeading : 1.5 * kLeading;
    }
    for (const Label& label : kLabels) {
        if (label.page == page) {
            lines.push_back({120, label.y, kTextSize, label.text});
        }
    }
    lines.push_back({500, 40, 10, "Page " + std::to_string(page + 1)});
    return lines;
}

// Rectangle and quads of a comment that marks a phrase. An insertion stands below its end.
void PlaceAtPhrase(const SampleComment& comment, AnnotationProperties& properties)
{
    const std::vector<Documents::Quad> quads = FindPhrase(LinesOf(comment.page), comment.phrase);
    if (properties.subtype == "Caret") {
        const auto& [x, y] = quads.back().bottomRight;
        properties.rect = _PDRect{x - 5, y - 7, x + 5, y + 3};
        return;
    }
    properties.rect = Documents::BoundsOf(quads);
    if (Documents::IsTextMarkupSubtype(properties.subtype)) {
        properties.quads = quads;
    }
}

AnnotationProperties PropertiesOf(const SampleComment& comment)
{
    AnnotationProperties properties;
    properties.subtype = comment.subtype;
    properties.contents = comment.contents;
    properties.title = comment.title;
    properties.subject = comment.subject;
    properties.created = comment.created;
    properties.modified = comment.modified;
    properties.rect = comment.rect;
    properties.flags = comment.flags;
    if (comment.phrase != nullptr) {
        PlaceAtPhrase(comment, properties);
    }
    return properties;
}

// A note's pop-up stands in the margin beside it and opens from it.
QPDFObjectHandle MakePopup(QPDF& file, QPDFObjectHandle note, const _PDRect& rect)
{
    AnnotationProperties properties;
    properties.subtype = "Popup";
    properties.rect = _PDRect{rect.right + 20, rect.bottom - 60, rect.right + 180, rect.top};
    QPDFObjectHandle popup =
        file.makeIndirectObject(Documents::MakeAnnotationDictionary(properties));
    popup.replaceKey("/Parent", note);
    note.replaceKey("/Popup", popup);
    return popup;
}

// What a subtype needs beyond a rectangle to be of any use.
void AddParts(QPDF& file, QPDFObjectHandle annotation, std::string_view subtype)
{
    if (subtype == "Link") {
        annotation.replaceKey("/Border", QPDFObjectHandle::parse("[0 0 1]"));
        auto target = QPDFObjectHandle::newArray();
        target.appendItem(file.getAllPages().at(1));
        target.appendItem(QPDFObjectHandle::newName("/Fit"));
        annotation.replaceKey("/Dest", target);
    } else if (subtype == "FileAttachment") {
        auto data = QPDFObjectHandle::newStream(&file, "page,comments\n1,7\n2,11\n");
        data.getDict().replaceKey("/Type", QPDFObjectHandle::newName("/EmbeddedFile"));
        auto embedded = QPDFObjectHandle::newDictionary();
        embedded.replaceKey("/F", data);
        auto fileEntry = QPDFObjectHandle::newDictionary();
        fileEntry.replaceKey("/Type", QPDFObjectHandle::newName("/Filespec"));
        fileEntry.replaceKey("/F", QPDFObjectHandle::newString("figures.csv"));
        fileEntry.replaceKey("/UF", QPDFObjectHandle::newUnicodeString("figures.csv"));
        fileEntry.replaceKey("/EF", embedded);
        annotation.replaceKey("/FS", file.makeIndirectObject(fileEntry));
    } else if (subtype == "Sound") {
        auto sound = QPDFObjectHandle::newStream(&file, std::string(800, '\x80'));
        sound.getDict().replaceKey("/Type", QPDFObjectHandle::newName("/Sound"));
        sound.getDict().replaceKey("/R", QPDFObjectHandle::newInteger(8000));
        annotation.replaceKey("/Sound", sound);
    }
}

QPDFObjectHandle MakeAnnotation(QPDF& file, const SampleComment& comment)
{
    const AnnotationProperties properties = PropertiesOf(comment);
    QPDFObjectHandle annotation =
        file.makeIndirectObject(Documents::MakeAnnotationDictionary(properties));
    Documents::AddAppearance(file, annotation, properties);
    annotation.replaceKey("/P", file.getAllPages().at(comment.page));
    AddParts(file, annotation, properties.subtype);
    return annotation;
}

}  // namespace

void FillSampleDocument(QPDF& file)
{
    const QPDFObjectHandle font = MakeFont(file);
    std::vector<QPDFObjectHandle> arrays;
    for (std::uint32_t page = 0; page < kPageCount; ++page) {
        QPDFObjectHandle object = AppendPage(file, font, LinesOf(page));
        arrays.push_back(object.replaceKeyAndGetNew("/Annots", QPDFObjectHandle::newArray()));
    }
    std::vector<QPDFObjectHandle> annotations;
    for (const SampleComment& comment : kComments) {
        QPDFObjectHandle annotation = MakeAnnotation(file, comment);
        annotations.push_back(annotation);
        if (comment.answered) {
            annotation.replaceKey("/IRT", annotations.at(*comment.answered));
        }
        arrays[comment.page].appendItem(annotation);
        // An answer is shown with what it answers.
        if (std::string_view{comment.subtype} == "Text" && !comment.contents.empty() &&
            !comment.answered) {
            arrays[comment.page].appendItem(MakePopup(file, annotation, comment.rect));
        }
    }
}

std::string SampleDocumentBytes()
{
    QPDF file;
    file.emptyPDF();
    FillSampleDocument(file);
    QPDFWriter writer{file};
    writer.setOutputMemory();
    writer.setMinimumPDFVersion("1.7");
    writer.setDeterministicID(true);
    writer.write();
    const auto buffer = writer.getBufferSharedPointer();
    return {reinterpret_cast<const char*>(buffer->getBuffer()), buffer->getSize()};
}

}  // namespace MakeDocument
