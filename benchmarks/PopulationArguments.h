// The document sizes that speed figures are given for, as benchmark arguments: the number of
// comments, and the number of pages as the second argument.
#pragma once

#include "documents/Population.h"

#include <benchmark/benchmark.h>

inline void PopulationArguments(benchmark::internal::Benchmark* benchmark)
{
    using namespace Documents;
    benchmark->ArgNames({"", "pages"});
    for (const PopulationSize& size :
         {kPopulationSmall, kPopulationMedium, kPopulationLarge, kPopulationOnePage}) {
        benchmark->Args({size.comments, size.pages});
    }
    benchmark->Unit(benchmark::kMillisecond);
}

inline Documents::PopulationSize PopulationOf(const benchmark::State& state)
{
    return {static_cast<std::uint32_t>(state.range(0)), static_cast<std::uint32_t>(state.range(1))};
}
