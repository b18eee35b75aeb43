// Rendering of whole lists from documents in memory, beside the same lists put together with plain
// appends.
#include "ListRenderer.h"
#include "PopulationArguments.h"
#include "ReferenceList.h"

#include "services/BLDocumentObject.h"
#include "services/Host.h"

#include <malloc.h>

#include <limits>

namespace {

// Lists of all sizes are written to memory that the process has already, as small ones are anyway:
// what the system takes for fresh memory is not what is compared.
const bool g_memoryIsKept =
    mallopt(M_MMAP_MAX, 0) == 1 && mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max()) == 1;

// A host whose panel has registered its templates, and a document of the asked-for size.
class Bench {
public:
    explicit Bench(Documents::PopulationSize size)
        : host_(Workbench::HostOptions{}), state_(std::make_shared<Workbench::HostState>())
    {
        host_.StartPanel();
        document_ = Workbench::BLDocumentObject::Make(state_, MakePopulationDocument(size));
    }

    BLDocument* Document() const { return document_->AsInterface(); }

private:
    Workbench::Host host_;
    Workbench::HostStatePtr state_;
    BasicServiceObjectPtr<Workbench::BLDocumentObject> document_;
};

void CountComments(benchmark::State& state)
{
    state.counters["per_comment"] = benchmark::Counter(
        static_cast<double>(state.range(0)),
        benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void BM_Rendering_WholeList(benchmark::State& state)
{
    const Bench bench(PopulationOf(state));
    for (auto _ : state) {
        ListRenderer renderer(bench.Document());
        benchmark::DoNotOptimize(renderer.RenderResults());
    }
    CountComments(state);
}
BENCHMARK(BM_Rendering_WholeList)->Apply(PopulationArguments);

// What the worker does for a list that is loaded.
void BM_Rendering_AsLoaded(benchmark::State& state)
{
    const Bench bench(PopulationOf(state));
    for (auto _ : state) {
        ListRenderer renderer(bench.Document());
        benchmark::DoNotOptimize(renderer.RenderResultsUtf8());
    }
    CountComments(state);
}
BENCHMARK(BM_Rendering_AsLoaded)->Apply(PopulationArguments);

void BM_Rendering_PlainAppends(benchmark::State& state)
{
    const Bench bench(PopulationOf(state));
    const ReferenceList reference(ListRenderer(bench.Document()).RenderResults());
    for (auto _ : state) {
        benchmark::DoNotOptimize(reference.Build());
    }
    CountComments(state);
}
BENCHMARK(BM_Rendering_PlainAppends)->Apply(PopulationArguments);

}  // namespace
