// Comments deleted through the panel, and the files that are saved then. The files are those of the
// folder that COMMENTS_CORPUS names, and some made here.
#include "PdfBuilder.h"
#include "PdfComparison.h"

#include "actions/ActionRefused.h"
#include "driver/Script.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <sstream>

namespace SavedFilesTest {

namespace {

using namespace DocumentsTest;
namespace fs = std::filesystem;

// "2_1" as page and position.
std::pair<std::size_t, int> PlaceOf(const std::string& annotName)
{
    return {std::stoul(annotName), std::stoi(annotName.substr(annotName.find('_') + 1))};
}

void LoadFile(QPDF& file, const fs::path& path)
{
    file.setSuppressWarnings(true);
    file.processFile(path.c_str());
}

class SavedFiles : public testing::Test {
protected:
    fs::path Add(const std::string& name, const std::string& bytes)
    {
        WriteBytes(folder_ / name, bytes);
        return folder_ / name;
    }

    // Copies that may be written to.
    std::vector<fs::path> Files()
    {
        std::vector<fs::path> files;
        const auto note = Documents::MakeEntry({.subtype = "Text", .contents = u"twice"},
                                               Documents::MakeEntry({.subtype = "Popup"}));
        const auto locked = Documents::MakeEntry({.subtype = "Square", .flags = 128});
        const auto link = Documents::MakeEntry({.subtype = "Link"});
        files.push_back(Add("made.pdf", MakePdf({{.annotations = {note, link, locked, note}},
                                                 {.annotations = {nullptr, note->popup, note}},
                                                 {.annotations = {link, link}}})));
        files.push_back(
            Add("direct.pdf", OnePagePdf("/Annots 4 0 R /Twin 4 0 R",
                                         {"[<< /Subtype /Ink >> 5 0 R 6 0 R]",
                                          "<< /Subtype /Text /IRT 6 0 R /Popup 7 0 R >>",
                                          "<< /Subtype /Circle /AP << /N 7 0 R >> >>",
                                          "<< /Length 3 >>\nstream\nq Q\nendstream"})));
        files.push_back(folder_ / "sample.pdf");
        EXPECT_EQ(std::system((MAKE_DOCUMENT " --sample " + files.back().string()).c_str()), 0);
        if (const char* const corpus = std::getenv("COMMENTS_CORPUS"); corpus && *corpus) {
            for (const auto& entry : fs::directory_iterator(corpus)) {
                if (entry.path().extension() == ".pdf") {
                    files.push_back(folder_ / entry.path().filename().string());
                    fs::copy_file(entry.path(), files.back());
                    fs::permissions(files.back(), fs::perms::owner_write, fs::perm_options::add);
                }
            }
        }
        std::sort(files.begin() + 3, files.end());
        return files;
    }

    // What the panel cannot do (go to a comment without a rectangle), and damage of the file, are
    // no concern of these tests.
    static void Run(Workbench::Session& session, const std::string& text)
    {
        std::istringstream steps(text);
        std::ostringstream output;
        std::ostringstream warnings;
        Workbench::RunScript(session, steps, output, warnings);
    }

    // The items of a view whose annotations the document lets go, in the order of the list.
    static std::vector<std::string> Deletable(const Workbench::Session& session,
                                              Workbench::DocumentNumber number)
    {
        const Workbench::OpenDocument& document = session.Documents().Require(number);
        Documents::Document& content = *document.content;
        std::vector<std::string> names;
        if (content.ReadOnly() || !content.AnnotationDeletionPermitted()) {
            return names;
        }
        for (const Workbench::PanelPage& page : session.ReadView(document).pages) {
            for (const Workbench::PanelItem& item : page.items) {
                const auto [index, position] = PlaceOf(item.annotName);
                const auto annotation = content.AnnotationAt(static_cast<std::uint32_t>(index),
                                                             static_cast<std::uint32_t>(position));
                if (Documents::Document::DeletionRefusal(annotation.Get()).empty()) {
                    names.push_back(item.annotName);
                }
            }
        }
        return names;
    }

    const TemporaryFolder folder_;
};

TEST_F(SavedFiles, LackTheCommentsDeletedInThePanelAndNothingElse)
{
    std::size_t deletedInAll = 0;
    for (const fs::path& path : Files()) {
        SCOPED_TRACE(path.filename().string());
        Workbench::Session session({});
        std::optional<Workbench::DocumentFile> document;
        try {
            document = session.Read(path.string());
        } catch (const Workbench::ActionRefused&) {
            continue;
        }
        session.Start({*document});
        document.reset();

        Places chosen;
        std::vector<std::string> left = Deletable(session, 0);
        for (const std::string& name : left) {
            chosen.insert(PlaceOf(name));
        }
        if (chosen.empty()) {
            continue;
        }
        while (!left.empty()) {
            const std::size_t before = left.size();
            Run(session, "click 'li[annot-name=\"" + left.back() + "\"]'\nclick #delete");
            left = Deletable(session, 0);
            ASSERT_LT(left.size(), before) << "after the click on delete";
        }
        deletedInAll += chosen.size();

        const fs::path saved = folder_ / ("saved-" + path.filename().string());
        Run(session, "save '" + saved.string() + "'\nopen '" + saved.string() + "'");
        EXPECT_EQ(Deletable(session, 1), std::vector<std::string>());
        EXPECT_EQ(session.CheckConsistency().dump(), "{\"consistent\":true}");
        session.Finish();

        QPDF original;
        LoadFile(original, path);
        QPDF result;
        LoadFile(result, saved);
        const Places gone = WithTheirPopups(original, chosen);
        EXPECT_NE(DescribeDifference(original, {}, result), "");
        EXPECT_EQ(DescribeDifference(original, gone, result), "");
    }
    EXPECT_GE(deletedInAll, 7u);
}

}  // namespace

}  // namespace SavedFilesTest
