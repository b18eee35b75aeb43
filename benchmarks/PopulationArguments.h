// The documents that speed figures are given for, as benchmark arguments: the number of comments,
// that of pages, and 1 where some texts look like markup.
#pragma once

#include "documents/Population.h"

#include <benchmark/benchmark.h>

#include <initializer_list>

inline void AddPopulations(benchmark::internal::Benchmark* benchmark,
                           std::initializer_list<Documents::PopulationSize> sizes)
{
    benchmark->ArgNames({"", "pages", "tags"});
    for (const int tags : {0, 1}) {
        for (const Documents::PopulationSize& size : sizes) {
            benchmark->Args({size.comments, size.pages, tags});
        }
    }
}

inline void PopulationArguments(benchmark::internal::Benchmark* benchmark)
{
    using namespace Documents;
    AddPopulations(benchmark,
                   {kPopulationSmall, kPopulationMedium, kPopulationLarge, kPopulationOnePage});
    benchmark->Unit(benchmark::kMillisecond);
}

inline Documents::PopulationSize PopulationOf(const benchmark::State& state)
{
    return {static_cast<std::uint32_t>(state.range(0)), static_cast<std::uint32_t>(state.range(1)),
            state.range(2) == 0 ? Documents::PopulationTexts::kPlain
                                : Documents::PopulationTexts::kTagLike};
}
