// The wrappers of the PDF library's records, on a library that counts references and fails.
#include "HostFixture.h"

#include "pdf-library/PDFL.h"
#include "pdf-library/PDModelService.SO.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

// The library's state; its entries are plain functions.
int g_pageReferences;
int g_annotReferences;
ResultCode g_code;  // what every query answers, after it has written its output

_PDPageRec* const kPage = reinterpret_cast<_PDPageRec*>(0x100);
_PDAnnotRec* const kAnnot = reinterpret_cast<_PDAnnotRec*>(0x200);
_PDAnnotRec* const kOther = reinterpret_cast<_PDAnnotRec*>(0x300);

ResultCode WriteText(_PDAnnotRec*, PDTextSink sink, void* context)
{
    const char16_t text[] = {u'a', 0, 0xD83D, 0xDE00, 0xD83D};
    sink(context, text, 5);
    return g_code;
}

ResultCode WriteDate(_PDAnnotRec*, _PDDateRec* date)
{
    *date = {2024, 5, 1, 10, 0, 0, -3};
    return g_code;
}

PDFunctionTable MakeLibrary()
{
    PDFunctionTable table{};
    table.size = sizeof table;
    table.version = 1;
    table.PageAddRef = [](_PDPageRec*) { ++g_pageReferences; };
    table.PageRelease = [](_PDPageRec*) { --g_pageReferences; };
    table.AnnotAddRef = [](_PDAnnotRec*) { ++g_annotReferences; };
    table.AnnotRelease = [](_PDAnnotRec*) { --g_annotReferences; };
    table.PageGetAnnotCount = [](_PDPageRec*, std::uint32_t* count) {
        *count = 3;
        return g_code;
    };
    table.PageGetAnnot = [](_PDPageRec*, std::uint32_t position, _PDAnnotRec** annotation) {
        *annotation = position == 1 ? nullptr : kAnnot;  // 1: no annotation
        g_annotReferences += position == 1 ? 0 : 1;
        return g_code;
    };
    table.AnnotIsEqual = [](_PDAnnotRec* left, _PDAnnotRec* right, bool* equal) {
        *equal = left == right;
        return g_code;
    };
    table.AnnotIsListed = [](_PDAnnotRec*, bool* listed) {
        *listed = true;
        return g_code;
    };
    table.AnnotGetSubtype = [](_PDAnnotRec*, Atom* subtype) {
        *subtype = 77;
        return g_code;
    };
    table.AnnotGetContents = &WriteText;
    table.AnnotGetTitle = &WriteText;
    table.AnnotGetSubject = &WriteText;
    table.AnnotGetCreationDate = &WriteDate;
    table.AnnotGetModificationDate = &WriteDate;
    table.AnnotGetRect = [](_PDAnnotRec*, _PDRect* rect) {
        *rect = {3, 4, 1, 2};
        return g_code;
    };
    return table;
}

const PDFunctionTable g_library = MakeLibrary();

class PDFLibrary : public Fakes::HostFixture {
protected:
    PDFLibrary()
    {
        g_pageReferences = g_annotReferences = 0;
        g_code = kResultOk;
        service_.On<PDModelService::GetFunctionTable>([this](const PDFunctionTable** table) {
            *table = table_;
            return kResultOk;
        });
        Provide(service_);
    }
    ~PDFLibrary() override
    {
        EXPECT_EQ(g_pageReferences, 0);
        EXPECT_EQ(g_annotReferences, 0);
    }

    static PDFL::Page TakePage()
    {
        PDFL::Page page;
        *page.Receive() = kPage;
        ++g_pageReferences;
        return page;
    }

    Fakes::Fake<PDModelService> service_;
    const PDFunctionTable* table_ = &g_library;
};

// First of this file: the table, once fetched, is kept for the life of the process.
TEST_F(PDFLibrary, IsFetchedUntilItIsWholeAndThenNeverAgain)
{
    PDFunctionTable cut = g_library;
    cut.size = sizeof cut - 1;
    for (const PDFunctionTable* unusable : {static_cast<const PDFunctionTable*>(nullptr),
                                            static_cast<const PDFunctionTable*>(&cut)}) {
        table_ = unusable;
        const auto thrown = Fakes::ThrownBy([] { PDFL::Library(); });
        ASSERT_TRUE(thrown);
        EXPECT_EQ(thrown->Code(), 2u);
        EXPECT_EQ(thrown->Message(), L"Not initialized");
    }
    service_->CutTable(0);
    EXPECT_TRUE(Fakes::ThrownBy([] { PDFL::Library(); }));
    service_->CutTable(8);
    table_ = &g_library;
    EXPECT_EQ(&PDFL::Library(), &g_library);
    const unsigned calls = service_.Calls<PDModelService::GetFunctionTable>();
    ProvideAs("PDModelService", nullptr);
    EXPECT_EQ(&PDFL::Library(), &g_library);
    EXPECT_EQ(service_.Calls<PDModelService::GetFunctionTable>(), calls);
}

TEST_F(PDFLibrary, WrappersHoldOneReferenceHoweverTheyArePassedOn)
{
    const PDFL::Page page = TakePage();
    {
        const PDFL::Page copy = page;
        EXPECT_EQ(g_pageReferences, 2);
    }
    PDFL::Annotation first = PDFL::Annotation::At(page, 0);
    EXPECT_EQ(g_annotReferences, 1);
    PDFL::Annotation second = PDFL::Annotation::Retain(kOther);
    EXPECT_EQ(g_annotReferences, 2);
    second = first;
    EXPECT_EQ(g_annotReferences, 2);
    const PDFL::Annotation moved = std::move(first);
    EXPECT_FALSE(first);  // NOLINT: a wrapper moved from is empty
    second = {};
    EXPECT_EQ(g_annotReferences, 1);
    EXPECT_FALSE(PDFL::Annotation::At(page, 1));
    EXPECT_FALSE(PDFL::Annotation::Retain(nullptr));
    g_code = 9;  // a record that comes with a failure is given back
    EXPECT_FALSE(PDFL::Annotation::At(page, 5));
    EXPECT_EQ(g_annotReferences, 1);
}

TEST_F(PDFLibrary, QueriesAnswerOnlyWhatTheLibraryStandsBy)
{
    const PDFL::Page page = TakePage();
    const PDFL::Annotation annotation = PDFL::Annotation::Retain(kAnnot);
    const PDFL::Annotation same = PDFL::Annotation::Retain(kAnnot);
    const PDFL::Annotation other = PDFL::Annotation::Retain(kOther);
    const PDFL::Annotation none;
    std::wstring text{L'a', 0};
    text += L"\U0001F600";
    text.push_back(static_cast<wchar_t>(0xD83D));
    for (const ResultCode code : {0u, 1u, 8u, 10u}) {
        SCOPED_TRACE(code);
        g_code = code;
        const bool ok = code == 0;
        EXPECT_EQ(page.AnnotationCount(), ok ? 3u : 0u);
        EXPECT_EQ(annotation.IsEqual(same), ok);
        EXPECT_FALSE(annotation.IsEqual(other));
        EXPECT_FALSE(annotation.IsEqual(none));
        EXPECT_FALSE(none.IsEqual(none));
        EXPECT_EQ(annotation.IsListed(), ok);
        EXPECT_FALSE(none.IsListed());
        EXPECT_EQ(annotation.Subtype(), ok ? 77u : kAtomNone);
        EXPECT_EQ(none.Subtype(), kAtomNone);
        for (const auto query :
             {&PDFL::Annotation::Contents, &PDFL::Annotation::Title, &PDFL::Annotation::Subject}) {
            EXPECT_EQ((annotation.*query)(), ok ? text : L"");
            EXPECT_EQ((none.*query)(), L"");
        }
        for (const auto query :
             {&PDFL::Annotation::CreationDate, &PDFL::Annotation::ModificationDate}) {
            EXPECT_EQ((annotation.*query)().year, ok ? 2024 : 0);
            EXPECT_EQ((annotation.*query)().utcOffsetHours, ok ? -3 : 0);
            EXPECT_EQ((none.*query)().year, 0);
        }
        _PDRect rect{9, 9, 9, 9};
        EXPECT_EQ(annotation.Rectangle(rect), code);
        EXPECT_EQ(none.Rectangle(rect), kResultNullArgument);
        EXPECT_EQ(rect.left + rect.bottom + rect.right + rect.top, 0);
    }
    EXPECT_EQ(PDFL::Page().AnnotationCount(), 0u);
    const _PDRect ordered = PDFL::Normalised({3, 4, 1, 2});
    EXPECT_EQ(ordered.left, 1);
    EXPECT_EQ(ordered.bottom, 2);
    EXPECT_EQ(ordered.right, 3);
    EXPECT_EQ(ordered.top, 4);
}

}  // namespace
