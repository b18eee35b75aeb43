#include "Listing.h"

#include "documents/AnnotationSyntax.h"
#include "documents/FaultInjection.h"
#include "documents/MemoryDocument.h"

#include <gtest/gtest.h>

#include <set>

#include <functional>

namespace {

using namespace Documents;
using DocumentsTest::TextOf;

// Demands of every test that it leaves no record behind.
class FunctionTableTest : public testing::Test {
protected:
    ~FunctionTableTest() override { EXPECT_EQ(CountLiveRecords(), before_); }

    static MemoryEntry Note(std::u16string contents)
    {
        AnnotationProperties properties;
        properties.subtype = "Text";
        properties.contents = std::move(contents);
        properties.rect = _PDRect{1, 2, 3, 4};
        return MakeEntry(std::move(properties));
    }

    static std::shared_ptr<MemoryDocument> OnePage(std::vector<MemoryEntry> entries)
    {
        return MemoryDocument::Make("test", {{.annotations = std::move(entries)}});
    }

    const PDFunctionTable& table_ = FunctionTable();

private:
    const LiveRecords before_ = CountLiveRecords();
};

// Every query of the table that takes an annotation, with a value that must be cleared.
struct Query {
    TableEntry entry;
    std::function<ResultCode(_PDAnnotRec*)> call;
    std::function<bool()> isCleared;
};

std::vector<Query> Queries()
{
    static bool flag;
    static Atom atom;
    static _PDDateRec date;
    static _PDRect rect;
    static bool sunk;
    flag = sunk = true;
    atom = 7;
    date = {2024, 1, 1, 1, 1, 1, 1};
    rect = {1, 1, 1, 1};
    const PDTextSink sink = [](void*, const char16_t*, std::uint32_t) { sunk = true; };
    const PDFunctionTable& table = FunctionTable();
    const auto text = [&](TableEntry entry, DocumentsTest::TextEntry function) {
        return Query{entry,
                     [=, &table](_PDAnnotRec* record) {
                         sunk = false;
                         return (table.*function)(record, sink, nullptr);
                     },
                     [] { return !sunk; }};
    };
    return {
        {TableEntry::kAnnotIsEqual,
         [&](_PDAnnotRec* record) { return table.AnnotIsEqual(record, record, &flag); },
         [] { return !flag; }},
        {TableEntry::kAnnotIsListed,
         [&](_PDAnnotRec* record) { return table.AnnotIsListed(record, &flag); },
         [] { return !flag; }},
        {TableEntry::kAnnotGetSubtype,
         [&](_PDAnnotRec* record) { return table.AnnotGetSubtype(record, &atom); },
         [] { return atom == kAtomNone; }},
        text(TableEntry::kAnnotGetContents, &PDFunctionTable::AnnotGetContents),
        text(TableEntry::kAnnotGetTitle, &PDFunctionTable::AnnotGetTitle),
        text(TableEntry::kAnnotGetSubject, &PDFunctionTable::AnnotGetSubject),
        {TableEntry::kAnnotGetCreationDate,
         [&](_PDAnnotRec* record) { return table.AnnotGetCreationDate(record, &date); },
         [] { return date.year == 0; }},
        {TableEntry::kAnnotGetModificationDate,
         [&](_PDAnnotRec* record) { return table.AnnotGetModificationDate(record, &date); },
         [] { return date.year == 0; }},
        {TableEntry::kAnnotGetRect,
         [&](_PDAnnotRec* record) { return table.AnnotGetRect(record, &rect); },
         [] { return rect.right == 0.0; }},
    };
}

TEST_F(FunctionTableTest, RefusesNullsAndClearsItsValues)
{
    for (const Query& query : Queries()) {
        EXPECT_EQ(query.call(nullptr), kResultNullArgument) << static_cast<int>(query.entry);
        EXPECT_TRUE(query.isCleared()) << static_cast<int>(query.entry);
    }
    table_.PageAddRef(nullptr);
    table_.PageRelease(nullptr);
    table_.AnnotAddRef(nullptr);
    table_.AnnotRelease(nullptr);

    const auto document = OnePage({Note(u"a"), nullptr});
    const PageRef page = document->AcquirePage(0);
    const AnnotationRef note = document->AnnotationAt(0, 0);
    std::uint32_t count = 9;
    EXPECT_EQ(table_.PageGetAnnotCount(nullptr, &count), kResultNullArgument);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(table_.PageGetAnnotCount(page.Get(), nullptr), kResultNullArgument);
    EXPECT_EQ(table_.AnnotGetRect(note.Get(), nullptr), kResultNullArgument);
    EXPECT_EQ(table_.AnnotGetTitle(note.Get(), nullptr, nullptr), kResultNullArgument);
    bool equal = true;
    EXPECT_EQ(table_.AnnotIsEqual(note.Get(), nullptr, &equal), kResultNullArgument);
    EXPECT_FALSE(equal);

    _PDAnnotRec* record = note.Get();
    EXPECT_EQ(table_.PageGetAnnot(page.Get(), 1, &record), kResultOk);
    EXPECT_EQ(record, nullptr);
    record = note.Get();
    EXPECT_EQ(table_.PageGetAnnot(page.Get(), 2, &record), kResultOutOfRange);
    EXPECT_EQ(record, nullptr);
}

TEST_F(FunctionTableTest, EqualityIsThatOfTheAnnotationObject)
{
    const MemoryEntry note = Note(u"same text");
    const auto document = MemoryDocument::Make(
        "test", {{.annotations = {note, Note(u"same text"), note}}, {.annotations = {note}}});
    const auto other = OnePage({note});
    const auto areEqual = [&](const AnnotationRef& left, const AnnotationRef& right) {
        bool equal = false;
        EXPECT_EQ(table_.AnnotIsEqual(left.Get(), right.Get(), &equal), kResultOk);
        return equal;
    };
    const AnnotationRef first = document->AnnotationAt(0, 0);
    EXPECT_TRUE(areEqual(first, document->AnnotationAt(0, 0)));
    EXPECT_TRUE(areEqual(first, document->AnnotationAt(0, 2)));
    EXPECT_TRUE(areEqual(first, document->AnnotationAt(1, 0)));
    EXPECT_FALSE(areEqual(first, document->AnnotationAt(0, 1)));
    EXPECT_FALSE(areEqual(first, other->AnnotationAt(0, 0)));
    EXPECT_EQ(document->PageIndexOf(document->AnnotationAt(1, 0).Get()), 0u);
    EXPECT_EQ(document->PageIndexOf(other->AnnotationAt(0, 0).Get()), kPDNoPage);
    EXPECT_EQ(document->PageIndexOf(nullptr), kPDNoPage);
}

TEST_F(FunctionTableTest, ListsMarkupAnnotationsThatTheScreenShows)
{
    struct Row {
        std::string subtype;
        std::uint32_t flags;
        bool listed;
    };
    std::vector<Row> rows = {
        {"Screen", 0, false},           {"RichMedia", 0, false},
        {"Watermark", 0, false},        {"line", 0, false},
        {"Highlights", 0, false},       {"", 0, false},
        {"Text", kFlagHidden, false},   {"Text", kFlagNoView | kFlagPrint, false},
        {"Text", kFlagInvisible, true}, {"Text", kFlagPrint | kFlagReadOnly | kFlagLocked, true},
    };
    const std::set<std::string_view> unlisted{"Link", "Popup", "TrapNet", "Widget"};
    for (const std::string_view known : KnownSubtypes()) {
        rows.push_back({std::string(known), 0, !unlisted.contains(known)});
    }
    for (const Row& row : rows) {
        AnnotationProperties properties;
        properties.subtype = row.subtype;
        properties.flags = row.flags;
        for (const bool listAll : {false, true}) {
            const auto document = MemoryDocument::Make(
                "test", {{.annotations = {MakeEntry(properties)}}}, {.listAll = listAll});
            bool listed = !row.listed;
            EXPECT_EQ(table_.AnnotIsListed(document->AnnotationAt(0, 0).Get(), &listed), kResultOk);
            EXPECT_EQ(listed, row.listed || listAll) << row.subtype << " " << row.flags;
        }
    }
}

TEST_F(FunctionTableTest, RecordsOutliveRemovalAndDocument)
{
    auto document = OnePage({Note(u"removed"), Note(u"kept")});
    const PageRef page = document->AcquirePage(0);
    const AnnotationRef removed = document->AnnotationAt(0, 0);
    ASSERT_TRUE(document->RemoveAnnotation(0, 0).Succeeded());
    document.reset();
    EXPECT_EQ(DocumentsTest::Describe(removed), "Text|removed||||"
                                                "|1.0 2.0 3.0 4.0");
    EXPECT_EQ(DocumentsTest::ListPage(page).size(), 2u);
}

TEST_F(FunctionTableTest, FaultsStrikeTheNthCallAndNoOther)
{
    const auto document = OnePage({Note(u"a")});
    const AnnotationRef note = document->AnnotationAt(0, 0);
    for (const Query& query : Queries()) {
        const FaultInjection fault{{.entry = query.entry, .code = 77, .skip = 2, .times = 2}};
        for (const ResultCode expected : {0u, 0u, 77u, 77u, 0u}) {
            EXPECT_EQ(query.call(note.Get()), expected) << static_cast<int>(query.entry);
            EXPECT_TRUE(expected == 0 || query.isCleared()) << static_cast<int>(query.entry);
        }
        EXPECT_EQ(fault.Failures(), 2u);
    }
    for (const Query& query : Queries()) {
        EXPECT_EQ(query.call(note.Get()), kResultOk) << "a fault is over with its handle";
    }
}

}  // namespace
