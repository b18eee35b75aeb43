#include "Listing.h"
#include "PdfBuilder.h"

#include "documents/AnnotationSyntax.h"
#include "documents/Population.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <set>

namespace DocumentsTest {

namespace {

int RunTool(const std::string& arguments)
{
    const int status =
        std::system((std::string{MAKE_DOCUMENT} + " " + arguments + " 2>/dev/null").c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(MakeDocument, WritesThePopulationOfTheMemoryDocument)
{
    const TemporaryFolder folder;
    const auto memory = Documents::MakePopulationDocument({200, 9}, 5);
    for (const char* extra : {"", "--appearances "}) {
        ASSERT_EQ(RunTool(extra + std::string{"--comments 200 --pages 9 --seed 5 "} +
                          (folder / "a.pdf").string()),
                  0);
        const auto file = Documents::QpdfDocument::Open(folder / "a.pdf").document;
        ASSERT_TRUE(file);
        EXPECT_EQ(List(*file), List(*memory));
        EXPECT_EQ(file->Warnings(), std::vector<std::string>{});
    }
    const std::string bytes = ReadBytes(folder / "a.pdf");
    ASSERT_EQ(
        RunTool("--appearances --comments 200 --pages 9 --seed 5 " + (folder / "a.pdf").string()),
        0);
    EXPECT_EQ(ReadBytes(folder / "a.pdf"), bytes);
}

TEST(MakeDocument, SampleHasEverySubtypeListedAndNot)
{
    const TemporaryFolder folder;
    ASSERT_EQ(RunTool("--sample " + (folder / "a.pdf").string()), 0);
    const auto file = Documents::QpdfDocument::Open(folder / "a.pdf").document;
    ASSERT_TRUE(file);
    std::set<std::string> subtypes;
    for (const auto& page : List(*file)) {
        for (const std::string& line : page) {
            subtypes.insert(line.substr(0, line.find('|')));
        }
    }
    for (const std::string_view known : Documents::KnownSubtypes()) {
        const std::string prefix = Documents::IsMarkupSubtype(known) ? "" : "-";
        EXPECT_EQ(subtypes.erase(prefix + std::string(known)), known == "Widget" ? 0u : 1u)
            << known;
    }
    EXPECT_EQ(subtypes, (std::set<std::string>{"-Text"})) << "hidden ones";
    EXPECT_EQ(file->Warnings(), std::vector<std::string>{});
}

TEST(MakeDocument, SaysWhatIsWrong)
{
    for (const char* arguments :
         {"", "--sample", "--comments 5 a.pdf", "--comments x --pages 1 a.pdf",
          "--comments 5 --pages 0 a.pdf", "--sample --comments 5 --pages 1 a.pdf",
          "--sample a.pdf b.pdf", "--comments"}) {
        EXPECT_EQ(RunTool(arguments), 2) << arguments;
    }
    EXPECT_EQ(RunTool("--sample /no/such/folder/a.pdf"), 1);
}

}  // namespace

}  // namespace DocumentsTest
