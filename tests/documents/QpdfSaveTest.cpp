#include "Listing.h"
#include "PdfBuilder.h"

#include "documents/FileReplacement.h"

#include <gtest/gtest.h>

#include <qpdf/QPDF.hh>

#include <sys/resource.h>

#include <csignal>

namespace DocumentsTest {

namespace {

using namespace Documents;
namespace fs = std::filesystem;

const std::string kPlain = OnePagePdf("/Annots [<< /Subtype /Text /Contents (a) >>]");

TEST(QpdfSave, KeepsWhatNobodyUnderstands)
{
    const std::string bytes = RawPdf(
        {
            "<< /Type /Catalog /Pages 2 0 R /X_Private << /Ref 6 0 R >> >>",
            "<< /Type /Pages /Kids [3 0 R] /Count 1 /X_Tree (kept in the tree) >>",
            "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 9 9] /Annots [4 0 R 5 0 R] /X_Page (kept "
            "on the page) >>",
            "<< /Subtype /Text /Contents (a) /X_Note [1 2.50 <00FF> /A#20B] /IRT 5 0 R >>",
            "<< /Subtype /X_Unheard /X_Data 7 0 R >>",
            "<< /X_Deep [<< /More (kept deep down) >>] >>",
            "<< /Length 5 /Filter /X_Codec /DecodeParms << /K 1 >> "
            ">>\nstream\n\x01\x02\xFFzz\nendstream",
        },
        "/X_Trailer (kept in the trailer) /Info << /X_Info (kept in the info) >>");
    const auto document = OpenPdf(bytes);
    ASSERT_TRUE(document->ChangeContents(0, 0, u"b").Succeeded());
    const TemporaryFolder folder;
    ASSERT_EQ(document->Save(folder / "a.pdf").error, "");

    const std::string saved = ReadBytes(folder / "a.pdf");
    QPDF file;
    file.processMemoryFile("saved", saved.data(), saved.size());
    QPDFObjectHandle root = file.getRoot();
    QPDFObjectHandle page = file.getAllPages().at(0);
    QPDFObjectHandle note = page.getKey("/Annots").getArrayItem(0);
    QPDFObjectHandle odd = page.getKey("/Annots").getArrayItem(1);
    EXPECT_EQ(root.getKey("/X_Private")
                  .getKey("/Ref")
                  .getKey("/X_Deep")
                  .getArrayItem(0)
                  .getKey("/More")
                  .getStringValue(),
              "kept deep down");
    EXPECT_EQ(root.getKey("/Pages").getKey("/X_Tree").getStringValue(), "kept in the tree");
    EXPECT_EQ(page.getKey("/X_Page").getStringValue(), "kept on the page");
    EXPECT_EQ(note.getKey("/X_Note").unparse(), "[ 1 2.50 <00ff> /A#20B ]");
    EXPECT_EQ(note.getKey("/Contents").getStringValue(), "b");
    EXPECT_TRUE(note.getKey("/IRT").isSameObjectAs(odd));
    EXPECT_EQ(file.getTrailer().getKey("/X_Trailer").getStringValue(), "kept in the trailer");
    EXPECT_EQ(file.getTrailer().getKey("/Info").getKey("/X_Info").getStringValue(),
              "kept in the info");
    QPDFObjectHandle data = odd.getKey("/X_Data");
    EXPECT_EQ(data.getDict().getKey("/Filter").getName(), "/X_Codec");
    const auto raw = data.getRawStreamData();
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(raw->getBuffer()), raw->getSize()),
              "\x01\x02\xFFzz");
}

TEST(QpdfSave, KeepsTheEncryption)
{
    const std::string bytes =
        MakePdf({{.annotations = {MakeEntry({.subtype = "Text", .contents = u"secret"})}}},
                [](QPDFWriter& writer) {
                    writer.setR6EncryptionParameters("user", "owner", true, true, true, false, true,
                                                     true, qpdf_r3p_full, true);
                });
    const auto document = OpenPdf(bytes, {"user"});
    ASSERT_TRUE(document->ChangeContents(0, 0, u"other secret").Succeeded());
    const TemporaryFolder folder;
    ASSERT_EQ(document->Save(folder / "a.pdf").error, "");
    EXPECT_EQ(ReadBytes(folder / "a.pdf").find("other secret"), std::string::npos);
    EXPECT_EQ(QpdfDocument::Open(folder / "a.pdf").failure, OpenFailure::kPassword);
    const auto reopened = QpdfDocument::Open(folder / "a.pdf", {"user"}).document;
    ASSERT_TRUE(reopened);
    EXPECT_EQ(List(*reopened), List(*document));
    EXPECT_FALSE(reopened->AnnotationDeletionPermitted());
    ASSERT_TRUE(QpdfDocument::Open(folder / "a.pdf", {"owner"}).document);

    EXPECT_EQ(QpdfDocument::OpenBytes(document->WriteBytes().bytes, "kept").failure,
              OpenFailure::kPassword);
    const auto plain = OpenPdf(document->WriteBytes(Encryption::kDropped).bytes);
    EXPECT_EQ(List(*plain), List(*document));
    EXPECT_TRUE(document->Encrypted());
    EXPECT_FALSE(plain->Encrypted());
    ASSERT_EQ(document->Save(folder / "b.pdf").error, "");
    EXPECT_EQ(QpdfDocument::Open(folder / "b.pdf").failure, OpenFailure::kPassword);
}

TEST(QpdfSave, ReplacesItsTargetInPlace)
{
    const TemporaryFolder folder;
    const auto document = OpenPdf(kPlain);
    WriteBytes(folder / "a.pdf", "former");
    fs::permissions(folder / "a.pdf", fs::perms{0640});
    fs::create_directory(folder / "far");
    fs::create_symlink("a.pdf", folder / "link.pdf");
    fs::create_symlink("link.pdf", folder / "indirect.pdf");
    fs::create_symlink("far/not-there-yet.pdf", folder / "dangling.pdf");
    for (const char* const link : {"link.pdf", "indirect.pdf", "dangling.pdf"}) {
        ASSERT_EQ(document->Save(folder / link).error, "");
        EXPECT_TRUE(fs::is_symlink(folder / link)) << link;
    }
    EXPECT_TRUE(fs::is_regular_file(folder / "far" / "not-there-yet.pdf"));
    EXPECT_EQ(fs::status(folder / "a.pdf").permissions(), fs::perms{0640});
    EXPECT_EQ(List(*QpdfDocument::Open(folder / "a.pdf").document), List(*document));
    const std::string longest(255, 'n');
    ASSERT_EQ(document->Save(folder / longest).error, "");
    EXPECT_EQ(folder.Names(), (std::vector<std::string>{"a.pdf", "dangling.pdf", "far",
                                                        "indirect.pdf", "link.pdf", longest}));
}

// Killed in the middle, a process leaves nothing.
TEST(QpdfSave, ShowsNothingBeforeItIsComplete)
{
    const TemporaryFolder folder;
    WriteBytes(folder / "a.pdf", "former");
    const auto write = [&](const ByteSink& sink) {
        const std::vector<unsigned char> bytes(100'000, 'x');
        sink(bytes.data(), bytes.size());
        EXPECT_EQ(folder.Names(), std::vector<std::string>{"a.pdf"});
    };
    ReplaceFile(folder / "a.pdf", write);
    EXPECT_EQ(ReadBytes(folder / "a.pdf").size(), 100'000u);
    EXPECT_FALSE(CreateFile(folder / "a.pdf", write));
    EXPECT_TRUE(CreateFile(folder / "b.pdf", write));
    EXPECT_EQ(fs::status(folder / "b.pdf").permissions(), fs::perms{0600});
    EXPECT_EQ(folder.Names(), (std::vector<std::string>{"a.pdf", "b.pdf"}));
}

// A file's size may not exceed this for as long as the object lives: writing fails in the middle.
class SizeLimit {
public:
    explicit SizeLimit(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &former_);
        const rlimit limited{bytes, former_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limited);
    }
    ~SizeLimit() { ::setrlimit(RLIMIT_FSIZE, &former_); }
    SizeLimit(const SizeLimit&) = delete;
    SizeLimit& operator=(const SizeLimit&) = delete;

private:
    rlimit former_{};
};

TEST(QpdfSave, ThatFailsLeavesTheFormerFile)
{
    const TemporaryFolder folder;
    const auto document = OpenPdf(kPlain);
    ASSERT_TRUE(document->AddAnnotation(0, "Ink", std::u16string(100'000, u'x')).Succeeded());
    WriteBytes(folder / "full.pdf", "former");
    WriteBytes(folder / "protected.pdf", "former");
    fs::permissions(folder / "protected.pdf", fs::perms::owner_read);
    fs::create_directory(folder / "folder.pdf");
    fs::create_symlink("loop.pdf", folder / "loop.pdf");
    const auto names = folder.Names();

    const struct {
        std::string name;
        const char* words;
    } rows[] = {
        {"full.pdf", "File too large"}, {"protected.pdf", "write-protected"},
        {"folder.pdf", "folder"},       {"missing/a.pdf", "No such file"},
        {"loop.pdf", "without end"},
    };
    for (const auto& row : rows) {
        std::string error;
        {
            const SizeLimit limit{row.name == "full.pdf" ? 20'000 : RLIM_INFINITY};
            error = document->Save(folder / row.name).error;
        }
        EXPECT_EQ(error.rfind((folder / row.name).string() + ": ", 0), 0u) << error;
        EXPECT_NE(error.find(row.words), std::string::npos) << error;
        EXPECT_EQ(error.find('\n'), std::string::npos) << error;
        EXPECT_TRUE(document->Modified());
        EXPECT_EQ(folder.Names(), names) << "nothing is left beside it";
    }
    EXPECT_EQ(ReadBytes(folder / "full.pdf"), "former");
    EXPECT_EQ(ReadBytes(folder / "protected.pdf"), "former");

    EXPECT_EQ(document->Save(folder / "full.pdf").error, "") << "a retry works";
    EXPECT_EQ(List(*QpdfDocument::Open(folder / "full.pdf").document), List(*document));
}

}  // namespace

}  // namespace DocumentsTest
