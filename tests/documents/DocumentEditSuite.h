// What edits do, for every kind of document. A kind is a type with
//   static std::shared_ptr<Document> Make(const std::vector<MemoryPage>&, const MemoryOptions&);
//   static std::shared_ptr<Document> Reopened(Document&);   the document as saved; or itself
#pragma once

#include "Listing.h"

#include "documents/FaultInjection.h"
#include "documents/MemoryDocument.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <functional>
#include <iterator>
#include <map>
#include <random>
#include <thread>

namespace DocumentsTest {

using namespace Documents;

inline MemoryEntry Entry(std::string subtype, std::u16string contents, std::uint32_t flags = 0,
                         MemoryEntry popup = nullptr)
{
    AnnotationProperties properties;
    properties.subtype = std::move(subtype);
    properties.contents = std::move(contents);
    properties.title = u"Анна";
    properties.created = {2024, 5, 1, 10, 20, 30, -7};
    properties.rect = _PDRect{10, 20, 30, 40};
    properties.flags = flags;
    return MakeEntry(std::move(properties), std::move(popup));
}

// Page 0: Text, its pop-up, an entry that is nothing, a Link. Page 1: a Square twice, a shared
// Circle. Page 2: the shared Circle. Page 3: nothing.
inline std::vector<MemoryPage> SuitePages()
{
    const MemoryEntry popup = Entry("Popup", u"");
    const MemoryEntry shared = Entry("Circle", u"shared");
    const MemoryEntry twice = Entry("Square", u"twice");
    return {
        {.annotations = {Entry("Text", u"note", 0, popup), popup, nullptr, Entry("Link", u"")}},
        {.annotations = {twice, shared, twice}},
        {.annotations = {shared}, .box = {0, 0, 300, 200}},
        {},
    };
}

// Subtype and contents of each entry of each page: "Text:note Popup: - Link:".
inline std::vector<std::string> Outline(Document& document)
{
    std::vector<std::string> outline;
    for (const auto& page : List(document)) {
        std::string words;
        for (const std::string& line : page) {
            const std::size_t first = line.front() == '-' ? 1 : 0;
            const std::size_t bar = line.find('|');
            words += words.empty() ? "" : " ";
            words += bar == std::string::npos
                         ? "nothing"
                         : line.substr(first, bar - first) + ":" +
                               line.substr(bar + 1, line.find('|', bar + 1) - bar - 1);
        }
        outline.push_back(words);
    }
    return outline;
}

template <class Kind>
class DocumentEdit : public testing::Test {
protected:
    ~DocumentEdit() override { EXPECT_EQ(CountLiveRecords(), before_); }

private:
    const LiveRecords before_ = CountLiveRecords();
};
TYPED_TEST_SUITE_P(DocumentEdit);

struct EditRow {
    const char* name;
    std::function<EditResult(Document&)> edit;
    std::vector<std::string> events;
    std::vector<std::string> outline;  // empty: as before
};

inline const std::vector<std::string> kSuiteOutline{
    "Text:note Popup: nothing Link:", "Square:twice Circle:shared Square:twice", "Circle:shared",
    ""};

inline std::vector<EditRow> EditRows()
{
    const auto& o = kSuiteOutline;
    return {
        {"add",
         [](Document& d) { return d.AddAnnotation(3, "Ink", u"ы\r"); },
         {"added 3 Ink"},
         {o[0], o[1], o[2], "Ink:ы\\r"}},
        {"change",
         [](Document& d) { return d.ChangeContents(0, 0, u"new"); },
         {"changed 0 Text"},
         {"Text:new Popup: nothing Link:", o[1], o[2], ""}},
        {"change to the same", [](Document& d) { return d.ChangeContents(0, 0, u"note"); }, {}, {}},
        {"change a shared one",
         [](Document& d) { return d.ChangeContents(2, 0, u"new"); },
         {"changed 1 Circle", "changed 2 Circle"},
         {o[0], "Square:twice Circle:new Square:twice", "Circle:new", ""}},
        {"change one that stands twice",
         [](Document& d) { return d.ChangeContents(1, 2, u"new"); },
         {"changed 1 Square"},
         {o[0], "Square:new Circle:shared Square:new", o[2], ""}},
        {"remove takes the pop-up along",
         [](Document& d) { return d.RemoveAnnotation(0, 0); },
         {"removed 0 Text", "removed 0 Popup"},
         {"nothing Link:", o[1], o[2], ""}},
        {"remove a pop-up alone",
         [](Document& d) { return d.RemoveAnnotation(0, 1); },
         {"removed 0 Popup"},
         {"Text:note nothing Link:", o[1], o[2], ""}},
        {"remove one that stands twice",
         [](Document& d) { return d.RemoveAnnotation(1, 2); },
         {"removed 1 Square"},
         {o[0], "Circle:shared", o[2], ""}},
        {"remove a shared one",
         [](Document& d) { return d.RemoveAnnotation(1, 1); },
         {"removed 1 Circle"},
         {o[0], "Square:twice Square:twice", o[2], ""}},
        {"insert first",
         [](Document& d) { return d.InsertPage(0); },
         {"inserted 0"},
         {"", o[0], o[1], o[2], ""}},
        {"insert last",
         [](Document& d) { return d.InsertPage(4); },
         {"inserted 4"},
         {o[0], o[1], o[2], "", ""}},
        {"delete", [](Document& d) { return d.DeletePage(1); }, {"deleted 1"}, {o[0], o[2], ""}},
        {"move down",
         [](Document& d) { return d.MovePage(0, 2); },
         {"moved 0 2"},
         {o[1], o[2], o[0], ""}},
        {"move up",
         [](Document& d) { return d.MovePage(3, 0); },
         {"moved 3 0"},
         {"", o[0], o[1], o[2]}},
        {"move nowhere", [](Document& d) { return d.MovePage(2, 2); }, {}, {}},
        {"add to no page",
         [](Document& d) { return d.AddAnnotation(4, "Ink", u""); },
         {"error: suite: there is no page 4, the document has 4"},
         {}},
        {"add without subtype",
         [](Document& d) { return d.AddAnnotation(0, "", u""); },
         {"error: suite: an annotation without a subtype cannot be added"},
         {}},
        {"change nothing",
         [](Document& d) { return d.ChangeContents(0, 2, u"x"); },
         {"error: suite: there is no annotation 2 on page 0, whose array has 4 entries"},
         {}},
        {"remove beyond",
         [](Document& d) { return d.RemoveAnnotation(3, 0); },
         {"error: suite: there is no annotation 0 on page 3, whose array has 0 entries"},
         {}},
        {"insert beyond",
         [](Document& d) { return d.InsertPage(5); },
         {"error: suite: a page cannot be inserted at 5, the document has 4"},
         {}},
        {"delete no page",
         [](Document& d) { return d.DeletePage(4); },
         {"error: suite: there is no page 4, the document has 4"},
         {}},
        {"move beyond",
         [](Document& d) { return d.MovePage(0, 4); },
         {"error: suite: there is no page 4, the document has 4"},
         {}},
    };
}

TYPED_TEST_P(DocumentEdit, ChangesListingAndTellsWhatToFire)
{
    for (const EditRow& row : EditRows()) {
        SCOPED_TRACE(row.name);
        const auto document = TypeParam::Make(SuitePages(), {});
        ASSERT_EQ(Outline(*document), kSuiteOutline);
        const Listing before = List(*document);
        const std::vector<PageRef> pages{document->AcquirePage(0), document->AcquirePage(1)};

        const EditResult result = row.edit(*document);
        EXPECT_EQ(Events(result), row.events);
        EXPECT_EQ(Outline(*document), row.outline.empty() ? kSuiteOutline : row.outline);
        EXPECT_EQ(document->Modified(), !result.changes.empty());
        EXPECT_EQ(document->PageCount(), List(*document).size());
        for (const Change& change : result.changes) {
            if (const auto* one = std::get_if<AnnotationChange>(&change)) {
                EXPECT_EQ(document->PageIndexOf(one->annotation.Get()) == kPDNoPage,
                          one->operation == PDAnnotOperation::kRemoved &&
                              Describe(one->annotation).find("shared") == std::string::npos);
            }
        }
        std::map<const _PDAnnotRec*, std::uint32_t> firstPages;
        for (std::uint32_t page = 0; page < document->PageCount(); ++page) {
            for (std::uint32_t position = 0; position < 6; ++position) {
                firstPages.emplace(document->AnnotationAt(page, position).Get(), page);
            }
        }
        firstPages.erase(nullptr);
        for (const auto& [annotation, page] : firstPages) {
            EXPECT_EQ(document->PageIndexOf(annotation), page);
        }
        // What was handed out shows the array as it was.
        EXPECT_EQ(ListPage(pages[0]).size(), before[0].size());
        EXPECT_EQ(ListPage(pages[1]).size(), before[1].size());

        const auto reopened = TypeParam::Reopened(*document);
        EXPECT_EQ(List(*reopened), List(*document));
    }
}

TYPED_TEST_P(DocumentEdit, KeepsTheLastPage)
{
    const auto document = TypeParam::Make({{}, {}}, {});
    EXPECT_TRUE(document->DeletePage(1).Succeeded());
    EXPECT_EQ(
        Events(document->DeletePage(0)),
        std::vector<std::string>{"error: suite: the only page of a document cannot be deleted"});
    EXPECT_EQ(document->PageCount(), 1u);
}

TYPED_TEST_P(DocumentEdit, AddsWithinThePageAndWithoutDates)
{
    const auto document = TypeParam::Make(SuitePages(), {});
    std::vector<_PDRect> rects;
    for (int count = 0; count < 60; ++count) {
        ASSERT_TRUE(document->AddAnnotation(2, "Highlight", u"x").Succeeded());
    }
    const auto page = ListPage(document->AcquirePage(2));
    ASSERT_EQ(page.size(), 61u);
    for (std::uint32_t position = 1; position < 61; ++position) {
        _PDRect rect{};
        ASSERT_EQ(FunctionTable().AnnotGetRect(document->AnnotationAt(2, position).Get(), &rect),
                  kResultOk);
        EXPECT_TRUE(0 <= rect.left && rect.left < rect.right && rect.right <= 300);
        EXPECT_TRUE(0 <= rect.bottom && rect.bottom < rect.top && rect.top <= 200);
        EXPECT_EQ(page[position].rfind("Highlight|x|||||", 0), 0u) << page[position];
        for (std::uint32_t other = 1; other < position; ++other) {
            EXPECT_NE(page[position], page[other]) << "each in a place of its own";
        }
    }
    ASSERT_TRUE(document->AddAnnotation(2, "Square", u"", _PDRect{1, 2, 3, 4}).Succeeded());
    EXPECT_EQ(ListPage(document->AcquirePage(2)).back(), "Square||||||1.0 2.0 3.0 4.0");
}

TYPED_TEST_P(DocumentEdit, NotesWhoAndWhenWhereItIsSaid)
{
    const auto document = TypeParam::Make(SuitePages(), {});
    const _PDRect rect{1, 2, 3, 4};
    const _PDDateRec noon{2025, 6, 7, 12, 0, 0, 2};
    const _PDDateRec evening{2025, 6, 7, 18, 0, 0, -1};
    const std::vector<std::string> states{
        "Ink|a|Zoë||2025-6-7 12:0:0 +2|2025-6-7 12:0:0 +2|1.0 2.0 3.0 4.0",
        "Ink|b|Zoë||2025-6-7 12:0:0 +2|2025-6-7 18:0:0 -1|1.0 2.0 3.0 4.0",
        "Ink|c|Zoë||2025-6-7 12:0:0 +2|2025-6-7 18:0:0 -1|1.0 2.0 3.0 4.0"};
    const auto last = [](Document& shown) { return ListPage(shown.AcquirePage(3)).back(); };
    ASSERT_TRUE(
        document->AddAnnotation(3, "Ink", u"a", rect, Authorship{u"Zoë", noon}).Succeeded());
    EXPECT_EQ(last(*document), states[0]);
    ASSERT_TRUE(document->ChangeContents(3, 0, u"b", evening).Succeeded());
    EXPECT_EQ(last(*document), states[1]);
    ASSERT_TRUE(document->ChangeContents(3, 0, u"c").Succeeded());
    EXPECT_EQ(last(*document), states[2]);
    ASSERT_TRUE(document->Undo().Succeeded());
    ASSERT_TRUE(document->Undo().Succeeded());
    EXPECT_EQ(last(*document), states[0]);
    EXPECT_EQ(last(*TypeParam::Reopened(*document)), states[0]);
    ASSERT_TRUE(document->Redo().Succeeded());
    EXPECT_EQ(last(*document), states[1]);
    EXPECT_EQ(last(*TypeParam::Reopened(*document)), states[1]);
}

TYPED_TEST_P(DocumentEdit, AnswersForPermissions)
{
    const auto document = TypeParam::Make(
        {{.annotations = {Entry("Text", u"free"), Entry("Text", u"locked", kFlagLocked),
                          Entry("Text", u"read-only", kFlagReadOnly), nullptr}}},
        {});
    const std::string refusals[] = {"", "the annotation is locked", "the annotation is read-only",
                                    ""};
    for (std::uint32_t position = 0; position < 4; ++position) {
        EXPECT_EQ(Document::DeletionRefusal(document->AnnotationAt(0, position).Get()),
                  refusals[position]);
    }
    document->ForceReadOnly(true);
    document->ForceAnnotationDeletionPermitted(false);
    EXPECT_TRUE(document->ReadOnly());
    EXPECT_FALSE(document->AnnotationDeletionPermitted());
    document->ForceReadOnly(std::nullopt);
    document->ForceAnnotationDeletionPermitted(std::nullopt);
    EXPECT_FALSE(document->ReadOnly());
    EXPECT_TRUE(document->AnnotationDeletionPermitted());
}

// Everything that taking edits back restores, identity included.
struct State {
    explicit State(Document& document) : listing{List(document)}
    {
        for (std::uint32_t page = 0; page < listing.size(); ++page) {
            const _PDRect box = document.PageBox(page).value_or(_PDRect{});
            boxes.push_back({box.left, box.bottom, box.right, box.top});
            for (std::uint32_t position = 0; position < listing[page].size(); ++position) {
                records.push_back(document.AnnotationAt(page, position));
            }
        }
    }
    bool operator==(const State&) const = default;

    Listing listing;
    std::vector<std::array<double, 4>> boxes;
    std::vector<AnnotationRef> records;
};

// What is fired when an edit is taken back that fired `event`.
inline std::string Opposite(std::string event)
{
    constexpr const char* kWords[][2] = {{"added", "removed"}, {"inserted", "deleted"}};
    for (const auto& [one, other] : kWords) {
        for (const auto& [from, to] : {std::pair{one, other}, std::pair{other, one}}) {
            if (event.rfind(from, 0) == 0) {
                return to + event.substr(std::strlen(from));
            }
        }
    }
    if (event.rfind("moved", 0) == 0) {
        std::swap(event[6], event[8]);
    }
    return event;
}

TYPED_TEST_P(DocumentEdit, IsTakenBackAndDoneAgain)
{
    for (const EditRow& row : EditRows()) {
        SCOPED_TRACE(row.name);
        const auto document = TypeParam::Make(SuitePages(), {});
        const State before{*document};
        const auto events = Events(row.edit(*document));
        const bool edited = document->Modified();
        const State after{*document};
        EXPECT_EQ(document->UndoKind().has_value(), edited);
        EXPECT_EQ(document->Revision(), edited ? 1u : 0u);
        for (int round = 0; edited && round < 2; ++round) {
            const auto kind = document->UndoKind();
            std::vector<std::string> opposite;
            std::transform(events.begin(), events.end(), std::back_inserter(opposite), Opposite);
            EXPECT_EQ(Events(document->Undo()), opposite);
            EXPECT_TRUE(State{*document} == before);
            EXPECT_FALSE(document->Modified());
            EXPECT_FALSE(document->UndoKind());
            EXPECT_EQ(document->RedoKind(), kind);
            EXPECT_EQ(Events(document->Redo()), events);
            EXPECT_TRUE(State{*document} == after);
            EXPECT_TRUE(document->Modified());
        }
        const std::uint64_t revision = document->Revision();
        EXPECT_EQ(Events(document->Redo()), std::vector<std::string>{})
            << "nothing is left to redo";
        EXPECT_EQ(document->Revision(), revision);
    }
}

// One step of a random script; the same state of `random` gives the same step.
inline EditResult RandomEdit(Document& document, std::mt19937& random)
{
    const auto below = [&](std::uint32_t bound) {
        return static_cast<std::uint32_t>(random() % bound);
    };
    const std::uint32_t page = below(document.PageCount());
    const std::uint32_t position = below(6);
    const std::u16string contents(1 + below(5), static_cast<char16_t>(u'а' + below(30)));
    constexpr const char* kSubtypes[] = {"Text", "Square", "FreeText", "Popup", "Line"};
    switch (below(12)) {
    case 0:
        return document.InsertPage(below(document.PageCount() + 1));
    case 1:
        return document.DeletePage(page);
    case 2:
        return document.MovePage(page, below(document.PageCount()));
    case 3:
    case 4:
    case 5:
        return document.RemoveAnnotation(page, position);
    case 6:
    case 7:
    case 8:
        return document.ChangeContents(page, position, contents);
    default:
        return document.AddAnnotation(page, kSubtypes[below(5)], contents);
    }
}

TYPED_TEST_P(DocumentEdit, LeadsBackToEveryStateOfARandomScript)
{
    const auto document = TypeParam::Make(SuitePages(), {});
    std::mt19937 random{5};
    std::vector<State> states{State{*document}};
    std::size_t present = 0;
    std::optional<std::size_t> saved = 0;  // none: an edit has dropped the saved state
    for (int step = 0; step < 600; ++step) {
        const std::uint64_t revision = document->Revision();
        const std::size_t former = present;
        const auto dice = random() % 20;
        if (dice < 5 && present > 0) {
            EXPECT_TRUE(document->Undo().Succeeded());
            --present;
        } else if (dice < 9 && present + 1 < states.size()) {
            EXPECT_TRUE(document->Redo().Succeeded());
            ++present;
        } else if (!RandomEdit(*document, random).changes.empty()) {
            states.resize(++present, states.front());
            states.emplace_back(*document);
            saved = saved < present ? saved : std::nullopt;
        } else if (dice == 9) {
            const auto reopened = TypeParam::Reopened(*document);
            ASSERT_EQ(List(*reopened), states[present].listing);
            saved = document->Modified() ? saved : present;
        }
        ASSERT_EQ(List(*document), states[present].listing) << step;
        ASSERT_TRUE(State{*document} == states[present]) << step;
        ASSERT_EQ(document->Modified(), saved != present) << step;
        ASSERT_EQ(document->UndoKind().has_value(), present > 0);
        ASSERT_EQ(document->RedoKind().has_value(), present + 1 < states.size());
        ASSERT_EQ(document->Revision(), revision + (present == former ? 0 : 1)) << step;
    }
}

// Readers see each page whole, before or after an edit, and records stay usable all the while.
TYPED_TEST_P(DocumentEdit, MayBeReadWhileItIsEdited)
{
    const auto document = TypeParam::Make(SuitePages(), {});
    std::atomic<bool> done{false};
    std::atomic<std::uint64_t> rounds{0};
    const auto read = [&] {
        const PDFunctionTable& table = FunctionTable();
        AnnotationRef kept;
        while (!done.load()) {
            for (std::uint32_t index = 0; index < document->PageCount(); ++index) {
                const PageRef page = document->AcquirePage(index);
                if (!page) {
                    continue;  // deleted meanwhile
                }
                std::uint32_t count = 0;
                table.PageGetAnnotCount(page.Get(), &count);
                const auto lines = ListPage(page);
                ASSERT_EQ(lines.size(), count);
                document->PageBox(index);
                if (AnnotationRef found = document->AnnotationAt(index, 0)) {
                    document->PageIndexOf(found.Get());
                    Document::DeletionRefusal(found.Get());
                    kept = found;
                }
            }
            Describe(kept);
            ++rounds;
        }
    };
    std::vector<std::thread> readers;
    for (int reader = 0; reader < 3; ++reader) {
        readers.emplace_back(read);
    }
    std::mt19937 random{11};
    for (int step = 0; step < 400 || rounds < 20; ++step) {
        RandomEdit(*document, random);
        if (step % 4 == 0) {
            document->Undo();
        }
    }
    done = true;
    for (std::thread& reader : readers) {
        reader.join();
    }
}

REGISTER_TYPED_TEST_SUITE_P(DocumentEdit, ChangesListingAndTellsWhatToFire, KeepsTheLastPage,
                            AddsWithinThePageAndWithoutDates, NotesWhoAndWhenWhereItIsSaid,
                            AnswersForPermissions, IsTakenBackAndDoneAgain,
                            LeadsBackToEveryStateOfARandomScript, MayBeReadWhileItIsEdited);

}  // namespace DocumentsTest
