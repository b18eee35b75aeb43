// The population of comments that benchmarks and tests use: the same sequence for memory documents
// and files. Mixed subtypes, contents of 20 to 200 characters in several scripts and with line
// breaks, titles, subjects, both dates, rectangles inside the page.
#pragma once

#include "documents/MemoryDocument.h"

namespace Documents {

// What people write: words, or also what looks like markup, in 1 of 8 authors (an address between
// angle brackets) and 1 of 20 contents (`List<String>`, a tag that is left open).
enum class PopulationTexts : std::uint8_t { kPlain, kTagLike };

struct PopulationSize {
    std::uint32_t comments;
    std::uint32_t pages;
    PopulationTexts texts = PopulationTexts::kPlain;
};

// The sizes that every speed figure is given for.
inline constexpr PopulationSize kPopulationSmall{1'000, 100};
inline constexpr PopulationSize kPopulationMedium{10'000, 1'000};
inline constexpr PopulationSize kPopulationLarge{100'000, 2'000};
inline constexpr PopulationSize kPopulationOnePage{10'000, 1};

// Calls `take(page, properties)` for each comment, pages in ascending order, comments spread evenly
// over them. Equal arguments give equal comments on every system.
template <class Take>
void GeneratePopulation(PopulationSize size, std::uint32_t seed, Take take);

// One comment of the population: the `index`-th of the sequence that `seed` begins.
AnnotationProperties MakePopulationComment(std::uint32_t index, std::uint32_t seed,
                                           PopulationTexts texts = PopulationTexts::kPlain);

// Page of the `index`-th comment.
constexpr std::uint32_t PopulationPage(PopulationSize size, std::uint32_t index) noexcept
{
    return static_cast<std::uint32_t>(std::uint64_t{index} * size.pages / size.comments);
}

// The population as a document in memory.
std::shared_ptr<MemoryDocument> MakePopulationDocument(PopulationSize size, std::uint32_t seed = 1,
                                                       const MemoryOptions& options = {});

template <class Take>
void GeneratePopulation(PopulationSize size, std::uint32_t seed, Take take)
{
    for (std::uint32_t index = 0; index < size.comments; ++index) {
        take(PopulationPage(size, index), MakePopulationComment(index, seed, size.texts));
    }
}

}  // namespace Documents
