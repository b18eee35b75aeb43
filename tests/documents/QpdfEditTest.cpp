#include "DocumentEditSuite.h"
#include "PdfBuilder.h"

#include <qpdf/Buffer.hh>
#include <qpdf/QPDF.hh>

#include <sstream>

namespace DocumentsTest {

namespace {

struct QpdfKind {
    static std::shared_ptr<Document> Make(const std::vector<MemoryPage>& pages,
                                          const MemoryOptions& options)
    {
        return OpenPdf(MakePdf(pages), {.listAll = options.listAll});
    }
    static std::shared_ptr<Document> Reopened(Document& document)
    {
        const bool modified = document.Modified();
        const BytesResult written = document.WriteBytes();
        EXPECT_EQ(written.error, "");
        EXPECT_EQ(List(*OpenPdf(written.bytes)), List(document));
        EXPECT_EQ(document.Modified(), modified);
        const TemporaryFolder folder;
        EXPECT_EQ(document.Save(folder / "saved.pdf").error, "");
        EXPECT_FALSE(document.Modified());
        auto reopened = QpdfDocument::Open(folder / "saved.pdf");
        EXPECT_EQ(reopened.message, "");
        EXPECT_EQ(reopened.document->Warnings(), std::vector<std::string>{});
        return reopened.document;
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Qpdf, DocumentEdit, QpdfKind);

// Both kinds of document are one and the same to the panel.
TEST(QpdfEdit, FollowsAMemoryDocumentThroughRandomScripts)
{
    for (std::uint32_t seed = 1; seed <= 10; ++seed) {
        const auto memory = MemoryDocument::Make("suite", SuitePages());
        const auto file = OpenPdf(MakePdf(SuitePages()));
        std::mt19937 forMemory{seed};
        std::mt19937 forFile{seed};
        for (int step = 0; step < 150; ++step) {
            const auto expected = Events(RandomEdit(*memory, forMemory));
            ASSERT_EQ(Events(RandomEdit(*file, forFile)), expected) << seed << ", " << step;
            ASSERT_EQ(List(*file), List(*memory)) << seed << ", " << step;
            if (step % 50 == 49) {
                ASSERT_EQ(List(*QpdfKind::Reopened(*file)), List(*memory)) << seed << ", " << step;
                ASSERT_EQ(List(*OpenPdf(memory->WriteBytes().bytes)), List(*memory))
                    << seed << ", " << step;
            }
        }
    }
}

// Edits before anything was read: QPDF would read the whole file for the first new object.
TEST(QpdfEdit, WorksOnPagesThatNobodyHasRead)
{
    const auto file = OpenPdf(MakePdf(SuitePages()));
    EXPECT_TRUE(file->MovePage(0, 1).Succeeded());
    EXPECT_TRUE(file->AddAnnotation(1, "Stamp", u"s").Succeeded());
    EXPECT_TRUE(file->RemoveAnnotation(0, 0).Succeeded());
    const std::vector<std::string> outline{
        "Circle:shared", "Text:note Popup: nothing Link: Stamp:s", "Circle:shared", ""};
    EXPECT_EQ(Outline(*file), outline);
    // Appearances are made by QPDF on saving; numbers of objects that are made afterwards must not
    // meet theirs.
    EXPECT_EQ(Outline(*QpdfKind::Reopened(*file)), outline);
    for (int count = 0; count < 5; ++count) {
        EXPECT_TRUE(file->AddAnnotation(3, "Stamp", u"t").Succeeded());
        EXPECT_EQ(List(*QpdfKind::Reopened(*file)), List(*file));
    }
}

TEST(QpdfEdit, ConcernsOnePageWhenPagesShareAnArray)
{
    const std::string bytes = RawPdf({
        "<< /Type /Catalog /Pages 2 0 R >>",
        "<< /Type /Pages /Kids [3 0 R 4 0 R] /Count 2 >>",
        "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 9 9] /Annots 5 0 R >>",
        "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 9 9] /Annots 5 0 R >>",
        "[6 0 R << /Subtype /Square /Contents (direct) >>]",
        "<< /Subtype /Text /Contents (a) >>",
    });
    const auto file = OpenPdf(bytes);
    EXPECT_TRUE(file->AddAnnotation(0, "Ink", u"b").Succeeded());
    EXPECT_TRUE(file->ChangeContents(0, 1, u"changed").Succeeded());
    EXPECT_TRUE(file->RemoveAnnotation(1, 0).Succeeded());
    const std::vector<std::string> outline{"Text:a Square:changed Ink:b", "Square:direct"};
    EXPECT_EQ(Outline(*file), outline);
    EXPECT_EQ(Outline(*QpdfKind::Reopened(*file)), outline);
}

TEST(QpdfEdit, LeavesNothingOfTheFormerContents)
{
    const auto file = OpenPdf(
        OnePagePdf("/Annots [4 0 R 5 0 R]",
                   {"<< /Subtype /FreeText /Contents (FORMER) /RC (FORMER) /AP << /N 6 0 R >> >>",
                    "<< /Subtype /Text /Contents (FORMER) /RC (FORMER) >>",
                    "<< /Type /XObject /Subtype /Form /BBox [0 0 1 1] /Length 8 "
                    ">>\nstream\n(FORMER)\nendstream"}));
    EXPECT_TRUE(file->ChangeContents(0, 0, u"new").Succeeded());
    EXPECT_TRUE(file->RemoveAnnotation(0, 1).Succeeded());
    const TemporaryFolder folder;
    EXPECT_EQ(file->Save(folder / "a.pdf").error, "");
    EXPECT_EQ(ReadBytes(folder / "a.pdf").find("FORMER"), std::string::npos);
}

// An object with all that it refers to; what leads upwards is cut off.
std::string Deep(QPDFObjectHandle object)
{
    std::string text;
    if (object.isStream()) {
        const auto data = object.getRawStreamData();
        return Deep(object.getDict()) +
               std::string(reinterpret_cast<const char*>(data->getBuffer()), data->getSize());
    }
    if (object.isDictionary()) {
        for (const auto& [key, value] : object.getDictAsMap()) {
            text += key == "/Parent" || key == "/P" ? "" : key + " " + Deep(value) + " ";
        }
        return "<<" + text + ">>";
    }
    if (object.isArray()) {
        for (const QPDFObjectHandle& item : object.getArrayAsVector()) {
            text += Deep(item) + " ";
        }
        return "[" + text + "]";
    }
    return object.unparseResolved();
}

// Each page with all that it inherits.
std::vector<std::string> DeepPages(const std::string& bytes)
{
    QPDF file;
    file.processMemoryFile("file", bytes.data(), bytes.size());
    file.pushInheritedAttributesToPage();
    std::vector<std::string> pages;
    for (const QPDFObjectHandle& page : file.getAllPages()) {
        pages.push_back(Deep(page));
    }
    return pages;
}

TEST(QpdfEdit, TakenBackLeavesTheFileAsItWas)
{
    const std::string bytes = RawPdf({
        "<< /Type /Catalog /Pages 2 0 R >>",
        "<< /Type /Pages /Kids [3 0 R 4 0 R 5 0 R] /Count 4 /MediaBox [0 0 90 90] /Resources << "
        "/X_Kept /A >> >>",
        "<< /Type /Page /Parent 2 0 R /Annots 8 0 R /X_Private (page) >>",
        "<< /Type /Page /Parent 2 0 R /Annots 8 0 R /Contents 10 0 R >>",
        "<< /Type /Pages /Parent 2 0 R /Kids [6 0 R 7 0 R] /Count 2 /Rotate 90 /CropBox [0 0 40 "
        "50] >>",
        "<< /Type /Page /Parent 5 0 R /Annots [9 0 R null 9 0 R] >>",
        "<< /Type /Page /Parent 5 0 R /MediaBox [0 0 7 7] >>",
        "[9 0 R << /Subtype /FreeText /Contents (direct) /RC (rich) /AP << /N 10 0 R >> /X_Private "
        "1 >>]",
        "<< /Subtype /FreeText /Contents (a) /RC (rich) /AP << /N 10 0 R >> >>",
        "<< /Type /XObject /Subtype /Form /BBox [0 0 1 1] /Length 3 >>\nstream\nq Q\nendstream",
    });
    const auto original = DeepPages(bytes);
    const auto file = OpenPdf(bytes);
    for (int round = 0; round < 2; ++round) {
        EXPECT_TRUE(file->DeletePage(2).Succeeded()) << "before anyone has read it";
        EXPECT_TRUE(file->ChangeContents(0, 1, u"b").Succeeded());
        EXPECT_TRUE(file->ChangeContents(1, 0, u"e").Succeeded());
        EXPECT_TRUE(file->RemoveAnnotation(0, 0).Succeeded());
        EXPECT_TRUE(file->AddAnnotation(2, "FreeText", u"c").Succeeded());
        EXPECT_TRUE(file->ChangeContents(2, 0, u"d").Succeeded());
        EXPECT_TRUE(file->InsertPage(1).Succeeded());
        EXPECT_TRUE(file->MovePage(3, 0).Succeeded());
        EXPECT_NE(DeepPages(file->WriteBytes().bytes), original);
        for (int step = 0; step < 8; ++step) {
            EXPECT_TRUE(file->Undo().Succeeded());
        }
        EXPECT_FALSE(file->UndoKind());
        EXPECT_FALSE(file->Modified());
        EXPECT_TRUE(file->RemoveAnnotation(2, 0).Succeeded()) << "both of its entries";
        EXPECT_TRUE(file->Undo().Succeeded());
        EXPECT_EQ(DeepPages(file->WriteBytes().bytes), original);
    }
    EXPECT_EQ(Outline(*file), Outline(*OpenPdf(bytes)));
}

// The file is asked for again after an edit that it gave way to.
TEST(QpdfEdit, IsWholeAfterWritingWasStopped)
{
    const auto document = OpenPdf(MakePdf({{}}));
    for (const int most : {0, 1}) {
        ASSERT_TRUE(document->AddAnnotation(0, "Text", u"added").Succeeded());
        int asked = 0;
        const BytesResult stopped =
            document->WriteBytes(Encryption::kKept, [&] { return asked++ < most; });
        EXPECT_EQ(stopped.error, document->Name() + ": writing was stopped");
        EXPECT_EQ(stopped.bytes, "");
        EXPECT_EQ(asked, most + 1);
    }
    EXPECT_EQ(List(*OpenPdf(document->WriteBytes().bytes)), List(*document));
}

// Some viewers draw nothing but what an annotation brings along.
TEST(QpdfEdit, AddsWhatViewersShowBeforeAnySave)
{
    const struct {
        const char* subtype;
        const char* painting;  // the operators that make marks
    } rows[] = {
        {"Highlight", "gs f "}, {"Square", "S "}, {"Circle", "s "},
        {"Text", "b S S S S "}, {"Ink", "S "},
    };
    const std::shared_ptr<Document> documents[] = {OpenPdf(MakePdf({{}})),
                                                   MemoryDocument::Make("suite", {{}})};
    for (const auto& document : documents) {
        for (const auto& row : rows) {
            ASSERT_TRUE(
                document->AddAnnotation(0, row.subtype, u"", _PDRect{50, 40, 10, 20}).Succeeded());
        }
        const BytesResult written = document->WriteBytes();
        QPDF file;
        file.processMemoryFile("written", written.bytes.data(), written.bytes.size());
        QPDFObjectHandle page = file.getAllPages().at(0);
        QPDFObjectHandle array = page.getKey("/Annots");
        for (int item = 0; item < array.getArrayNItems(); ++item) {
            SCOPED_TRACE(rows[item].subtype);
            QPDFObjectHandle annotation = array.getArrayItem(item);
            QPDFObjectHandle form = annotation.getKey("/AP").getKey("/N");
            ASSERT_TRUE(form.isFormXObject());
            EXPECT_EQ(form.getDict().getKey("/BBox").unparse(), "[ 0 0 40 20 ]");
            EXPECT_EQ(form.getDict()
                          .getKey("/Resources")
                          .getKey("/ExtGState")
                          .getKey("/Multiply")
                          .getKey("/BM")
                          .getName(),
                      "/Multiply");
            std::istringstream words{Deep(form)};
            std::string painting;
            for (std::string word; words >> word;) {
                painting += word == "gs" || word == "f" || word == "b" || word == "B" ||
                                    word == "S" || word == "s"
                                ? word + " "
                                : "";
            }
            EXPECT_EQ(painting, rows[item].painting);
        }
        EXPECT_EQ(array.getArrayItem(0).getKey("/QuadPoints").unparse(),
                  "[ 10 40 50 40 10 20 50 20 ]");
    }
}

}  // namespace

}  // namespace DocumentsTest
