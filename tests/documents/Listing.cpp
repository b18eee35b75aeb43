#include "Listing.h"

#include "service-common/UnicodeText.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>

namespace DocumentsTest {

namespace {

using Documents::FunctionTable;

std::string Spelled(std::u16string_view text)
{
    std::string spelled;
    for (const char c : UnicodeText::ToUtf8(text)) {
        spelled += c == '\r' ? "\\r" : c == '\n' ? "\\n" : c == '\t' ? "\\t" : std::string(1, c);
    }
    return spelled;
}

std::string DateText(const _PDDateRec& date)
{
    if (date.year == 0) {
        return {};
    }
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%d-%d-%d %d:%d:%d %+d", date.year, date.month,
                  date.day, date.hour, date.minute, date.second, date.utcOffsetHours);
    return text.data();
}

std::string SubtypeOf(_PDAnnotRec* annotation)
{
    Atom atom = kAtomNone;
    const char* name = nullptr;
    EXPECT_EQ(FunctionTable().AnnotGetSubtype(annotation, &atom), kResultOk);
    return atom != kAtomNone && VxGetStringFromAtom(atom, &name) == kResultOk ? name : "";
}

std::string RectText(_PDAnnotRec* annotation)
{
    _PDRect rect{};
    if (FunctionTable().AnnotGetRect(annotation, &rect) != kResultOk) {
        return {};
    }
    std::array<char, 128> text{};
    std::snprintf(text.data(), text.size(), "%.1f %.1f %.1f %.1f", rect.left, rect.bottom,
                  rect.right, rect.top);
    return text.data();
}

struct EventWords {
    std::string operator()(const Documents::AnnotationChange& change) const
    {
        std::string words = change.operation == PDAnnotOperation::kAdded     ? "added "
                            : change.operation == PDAnnotOperation::kRemoved ? "removed "
                                                                             : "changed ";
        words += std::to_string(change.page);
        words += ' ';
        words += SubtypeOf(change.annotation.Get());
        return words;
    }
    std::string operator()(const Documents::PagesChange& change) const
    {
        std::string words = change.operation == PDPageOperation::kInserted  ? "inserted"
                            : change.operation == PDPageOperation::kDeleted ? "deleted"
                                                                            : "moved";
        for (const std::uint32_t page : change.pages) {
            words += ' ';
            words += std::to_string(page);
        }
        return words;
    }
};

}  // namespace

std::u16string TextOf(TextEntry entry, const Documents::AnnotationRef& annotation)
{
    std::u16string result;
    const PDTextSink keep = [](void* context, const char16_t* text, std::uint32_t length) {
        static_cast<std::u16string*>(context)->assign(text, length);
    };
    EXPECT_EQ((FunctionTable().*entry)(annotation.Get(), keep, &result), kResultOk);
    return result;
}

std::string Describe(const Documents::AnnotationRef& annotation)
{
    if (!annotation) {
        return "nothing";
    }
    const PDFunctionTable& table = FunctionTable();
    bool listed = false;
    _PDDateRec created{};
    _PDDateRec modified{};
    EXPECT_EQ(table.AnnotIsListed(annotation.Get(), &listed), kResultOk);
    EXPECT_EQ(table.AnnotGetCreationDate(annotation.Get(), &created), kResultOk);
    EXPECT_EQ(table.AnnotGetModificationDate(annotation.Get(), &modified), kResultOk);
    std::string line(listed ? 0 : 1, '-');
    line += SubtypeOf(annotation.Get());
    for (const TextEntry entry :
         {&PDFunctionTable::AnnotGetContents, &PDFunctionTable::AnnotGetTitle,
          &PDFunctionTable::AnnotGetSubject}) {
        line += '|';
        line += Spelled(TextOf(entry, annotation));
    }
    for (const std::string& field :
         {DateText(created), DateText(modified), RectText(annotation.Get())}) {
        line += '|';
        line += field;
    }
    return line;
}

std::vector<std::string> ListPage(Documents::PageRef page)
{
    const PDFunctionTable& table = FunctionTable();
    std::uint32_t count = 0;
    EXPECT_EQ(table.PageGetAnnotCount(page.Get(), &count), kResultOk);
    std::vector<std::string> lines;
    for (std::uint32_t position = 0; position < count; ++position) {
        _PDAnnotRec* record = nullptr;
        EXPECT_EQ(table.PageGetAnnot(page.Get(), position, &record), kResultOk);
        lines.push_back(Describe(Documents::AnnotationRef::Adopt(record)));
    }
    return lines;
}

Listing List(Documents::Document& document)
{
    Listing listing;
    for (std::uint32_t page = 0; page < document.PageCount(); ++page) {
        listing.push_back(ListPage(document.AcquirePage(page)));
    }
    return listing;
}

std::vector<std::string> Events(const Documents::EditResult& result)
{
    if (!result.Succeeded()) {
        EXPECT_TRUE(result.changes.empty());
        return {"error: " + result.error};
    }
    std::vector<std::string> events;
    for (const Documents::Change& change : result.changes) {
        events.push_back(std::visit(EventWords{}, change));
    }
    return events;
}

}  // namespace DocumentsTest
