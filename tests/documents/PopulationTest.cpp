#include "Listing.h"

#include "documents/Population.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace {

using namespace Documents;

// Figures are comparable between systems and years only if everyone measures the same comments.
TEST(Population, IsTheSameOnEverySystem)
{
    const auto document = MakePopulationDocument({500, 7}, 3);
    std::uint64_t hash = 0xCBF29CE484222325u;
    for (const auto& page : DocumentsTest::List(*document)) {
        for (const std::string& line : page) {
            for (const char c : line) {
                hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3u;
            }
        }
    }
    EXPECT_EQ(hash, 7604056880540327742u);
    EXPECT_NE(DocumentsTest::List(*MakePopulationDocument({500, 7}, 4)),
              DocumentsTest::List(*document));
}

TEST(Population, HasWhatItPromises)
{
    constexpr PopulationSize kSize{2'000, 70};
    std::vector<std::uint32_t> perPage(kSize.pages);
    std::set<std::string> subtypes;
    std::size_t lineBreaks = 0;
    std::size_t nonLatin = 0;
    GeneratePopulation(kSize, 1, [&](std::uint32_t page, const AnnotationProperties& comment) {
        ++perPage.at(page);
        subtypes.insert(comment.subtype);
        EXPECT_GE(comment.contents.size(), 20u);
        EXPECT_LE(comment.contents.size(), 200u);
        lineBreaks += comment.contents.find(u'\r') != std::u16string::npos;
        nonLatin += comment.contents.find_first_not_of(u" \r\n") != std::u16string::npos &&
                    std::any_of(comment.contents.begin(), comment.contents.end(),
                                [](char16_t unit) { return unit > 0x300; });
        EXPECT_FALSE(comment.title.empty() || comment.subject.empty());
        EXPECT_TRUE(comment.created.year != 0 && comment.modified.year != 0);
        ASSERT_TRUE(comment.rect);
        EXPECT_TRUE(comment.rect->left >= 0 && comment.rect->right <= 612 &&
                    comment.rect->bottom >= 0 && comment.rect->top <= 792 &&
                    comment.rect->left < comment.rect->right &&
                    comment.rect->bottom < comment.rect->top);
    });
    EXPECT_GE(subtypes.size(), 12u);
    EXPECT_GT(lineBreaks, kSize.comments / 4);
    EXPECT_GT(nonLatin, kSize.comments / 2);
    const auto [least, most] = std::minmax_element(perPage.begin(), perPage.end());
    EXPECT_LE(*most - *least, 1u);
}

}  // namespace
