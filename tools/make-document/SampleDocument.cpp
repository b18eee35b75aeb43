#include "SampleDocument.h"

#include "PageText.h"

#include "documents/AnnotationDictionary.h"

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFWriter.hh>

#include <array>
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
};

constexpr std::uint32_t kPageCount = 6;

constexpr _PDDateRec kNoDate{};
constexpr _PDDateRec kMay{2024, 5, 1, 10, 0, 0, 2};
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

constexpr std::array<SampleComment, 44> kComments{{
    // Page 1: text markups.
    {0,
     "Highlight",
     {72, 658, 188, 672},
     u"A good opening.",
     u"A. Reviewer",
     u"Praise",
     kMay,
     kMay},
    {0,
     "Underline",
     {72, 630, 300, 644},
     u"Which source?",
     u"A. Reviewer",
     u"Question",
     kMay,
     kJune},
    {0, "StrikeOut", {72, 602, 254, 616}, u"Superfluous.", u"A. Reviewer", u"", kMay, kNoDate},
    {0, "Squiggly", {72, 574, 252, 588}, u"Spelling", u"", u"", kNoDate, kNoDate},
    {0,
     "Highlight",
     {72, 546, 326, 560},
     u"",
     u"A. Reviewer",
     u"Highlight without contents",
     kMay,
     kMay},
    {0,
     "Caret",
     {215, 511, 227, 523},
     u"insert: \"in most cases\"",
     u"Zoë O'Neill",
     u"Insertion",
     kJune,
     kJune},
    {0,
     "Text",
     {520, 640, 540, 660},
     u"Please check the numbers in table 2.\r\nThey do not add up.",
     u"Jörg Müller",
     u"Sticky note",
     kMay,
     kJune},
    {0, "Link", {72, 90, 200, 104}, u"", u"", u"", kNoDate, kNoDate},
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
     {120, 600, 300, 614},
     u"请检查这一段。\r谢谢！",
     u"李雷",
     u"校对",
     kMay,
     kJune},
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
     {120, 320, 300, 334},
     u"Outside the basic plane: \U0001D11E \U0001F4DD \U00020BB7",
     u"Zoë O'Neill",
     u"",
     kMay,
     kJune},
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
     u"A. Reviewer",
     u"Markup",
     kMay,
     kJune},
    {4,
     "Text",
     {72, 520, 92, 540},
     u"Not markup: a < b, c > d & e",
     u"A. Reviewer",
     u"Characters",
     kMay,
     kJune},
    {4, "Text", {72, 480, 92, 500}, u"\r", u"A. Reviewer", u"Only a line break", kMay, kJune},
    {4,
     "Text",
     {72, 440, 92, 460},
     u"Dates that do not exist: both rows are hidden",
     u"A. Reviewer",
     u"Dates",
     kImpossible,
     kImpossible},
    {4,
     "Text",
     {72, 400, 92, 420},
     u"Averyveryverylongwordthathasnoplaceatwhichitcouldbebrokenandgoesonandonandon",
     u"A. Reviewer",
     u"One word",
     kMay,
     kJune},
    {4,
     "Text",
     {72, 360, 92, 380},
     u"one\rtwo\nthree\r\nfour\r\rsix",
     u"A. Reviewer",
     u"Line breaks of every kind",
     kMay,
     kJune},
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

const std::array<std::vector<std::string>, kPageCount> kPageLines{{
    {"Text markups", "Every line of this page carries one.",
     "A sentence worth a highlight, for its opening.",
     "A claim that an underline asks the source of, for once.",
     "A phrase that is struck out for good.", "A wrod with a squiggle underneath.",
     "A highlight that has nothing to say about this line.",
     "Something is missing here, between two words."},
    {"Shapes, stamps and attachments", "Rectangle, oval, line; connected lines, polygon, pencil;",
     "stamp, redaction; text box, attachment, sound."},
    {"A page without comments", "The list leaves it out, and the page after it keeps its number."},
    {"Comments in many scripts"},
    {"Short and long comments, markup, dates"},
    {"Protected and hidden annotations"},
}};

std::vector<TextLine> LinesOf(std::uint32_t page)
{
    std::vector<TextLine> lines;
    double y = 720;
    for (const std::string& text : kPageLines[page]) {
        lines.push_back({72, y, lines.empty() ? 20.0 : 12.0, text});
        y -= lines.size() == 1 ? 30 : 28;
    }
    lines.push_back({500, 40, 10, "Page " + std::to_string(page + 1)});
    return lines;
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
    for (const SampleComment& comment : kComments) {
        QPDFObjectHandle annotation = MakeAnnotation(file, comment);
        arrays[comment.page].appendItem(annotation);
        if (std::string_view{comment.subtype} == "Text" && !comment.contents.empty()) {
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
