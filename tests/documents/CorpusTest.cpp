// Real files with an independent reading beside them, from the folder that COMMENTS_CORPUS names:
// FILE.pdf and golden/FILE.tsv. A reading is "page N" followed by one line for each annotation:
// subtype, contents, title, subject, creation and modification date, as the file spells them, with
// line breaks and tabs written as \r, \n and \t.
#include "Listing.h"
#include "PdfBuilder.h"

#include "documents/PdfText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <map>
#include <sstream>

namespace DocumentsTest {

namespace {

using namespace Documents;
namespace fs = std::filesystem;

// Files that do not open, and why.
const std::map<std::string, OpenFailure> kFailures{
    {"encrypted-needs-password.pdf", OpenFailure::kPassword},
    {"unreadable.pdf", OpenFailure::kDamaged},
};

// A date as it stands in the file, in the form of a listing; reads nothing but the usual form.
std::string ExpectedDate(const std::string& text)
{
    std::array<int, 6> fields{0, 1, 1, 0, 0, 0};
    int zone = 0;
    char sign = '+';
    const int read = std::sscanf(text.c_str(), "D:%4d%2d%2d%2d%2d%2d%c%2d", &fields[0], &fields[1],
                                 &fields[2], &fields[3], &fields[4], &fields[5], &sign, &zone);
    if (read < 1 || fields[0] <= 0) {
        return {};
    }
    std::array<char, 64> line{};
    std::snprintf(line.data(), line.size(), "%d-%d-%d %d:%d:%d %+d", fields[0], fields[1],
                  fields[2], fields[3], fields[4], fields[5],
                  sign == '-'   ? -zone
                  : sign == '+' ? zone
                                : 0);
    return line.data();
}

// The reading's lines without rectangles, entries that are no annotation left out.
Listing ReadGolden(const fs::path& path)
{
    Listing listing;
    std::istringstream lines{ReadBytes(path)};
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind("page ", 0) == 0) {
            listing.emplace_back();
            continue;
        }
        std::vector<std::string> fields(1);
        for (const char c : line) {
            if (c == '\t') {
                fields.emplace_back();
            } else {
                fields.back() += c;
            }
        }
        fields.resize(6);
        listing.back().push_back(fields[0] + "|" + fields[1] + "|" + fields[2] + "|" + fields[3] +
                                 "|" + ExpectedDate(fields[4]) + "|" + ExpectedDate(fields[5]));
    }
    return listing;
}

Listing WithoutRectangles(Listing listing)
{
    for (auto& page : listing) {
        page.erase(std::remove(page.begin(), page.end(), "nothing"), page.end());
        for (std::string& line : page) {
            line.erase(line.rfind('|'));
        }
    }
    return listing;
}

class Corpus : public testing::Test {
protected:
    void SetUp() override
    {
        const char* const folder = std::getenv("COMMENTS_CORPUS");
        if (folder == nullptr || *folder == '\0') {
            GTEST_SKIP() << "COMMENTS_CORPUS names no folder of real files";
        }
        folder_ = folder;
        for (const auto& entry : fs::directory_iterator{folder_}) {
            if (entry.path().extension() == ".pdf") {
                files_.push_back(entry.path());
            }
        }
        std::sort(files_.begin(), files_.end());
        ASSERT_FALSE(files_.empty()) << folder_;
    }

    fs::path Golden(const fs::path& file) const
    {
        return folder_ / "golden" / file.stem().concat(".tsv");
    }

    fs::path folder_;
    std::vector<fs::path> files_;
};

TEST_F(Corpus, EveryFileReadsAsTheIndependentReadingOrFailsClearly)
{
    int compared = 0;
    for (const fs::path& path : files_) {
        SCOPED_TRACE(path.filename().string());
        const OpenResult result = QpdfDocument::Open(path, {.listAll = true});
        const auto failure = kFailures.find(path.filename().string());
        if (failure != kFailures.end()) {
            EXPECT_EQ(result.failure, failure->second) << result.message;
        }
        if (!result.document) {
            EXPECT_FALSE(fs::exists(Golden(path))) << result.message;
            EXPECT_EQ(result.message.rfind(path.string() + ": ", 0), 0u) << result.message;
            EXPECT_EQ(result.message.find('\n'), std::string::npos) << result.message;
            continue;
        }
        const Listing listing = List(*result.document);
        if (fs::exists(Golden(path))) {
            EXPECT_EQ(WithoutRectangles(listing), ReadGolden(Golden(path)));
            ++compared;
        }
    }
    EXPECT_TRUE(compared > 0 || !fs::exists(folder_ / "golden"));
}

TEST_F(Corpus, AnEncryptedFileOpensWithItsPassword)
{
    const fs::path path = folder_ / "encrypted-needs-password.pdf";
    if (!fs::exists(path)) {
        GTEST_SKIP() << path << " is not there";
    }
    EXPECT_EQ(QpdfDocument::Open(path, {.password = "wrong"}).failure, OpenFailure::kPassword);
    EXPECT_TRUE(QpdfDocument::Open(path, {.password = "kanbanery"}).document);
}

}  // namespace

}  // namespace DocumentsTest
