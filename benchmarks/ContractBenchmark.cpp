// What the service-object contract costs: calls through a table with the check rule, reference
// counts, and events, each beside its plain counterpart.
#include "documents/Population.h"
#include "services/BLDocumentObject.h"
#include "services/HostState.h"

#include <benchmark/benchmark.h>

#include <functional>
#include <memory>
#include <vector>

namespace {

class Bench {
public:
    Bench()
        : state_(std::make_shared<Workbench::HostState>()),
          document_(
              Workbench::BLDocumentObject::Make(state_, Documents::MakePopulationDocument({10, 1})))
    {
    }

    Workbench::BLDocumentObject& Object() const { return *document_.Get(); }
    BLDocument* Document() const { return document_->AsInterface(); }

private:
    Workbench::HostStatePtr state_;
    BasicServiceObjectPtr<Workbench::BLDocumentObject> document_;
};

void BM_Call_ThroughTable(benchmark::State& state)
{
    const Bench bench;
    for (auto _ : state) {
        std::int32_t count = 0;
        CallMethod<BLDocument::GetPageCount>(bench.Document(), &count);
        benchmark::DoNotOptimize(count);
    }
}
BENCHMARK(BM_Call_ThroughTable);

void BM_Call_Plain(benchmark::State& state)
{
    const Bench bench;
    const auto plain = [&bench] { return bench.Object().Content().PageCount(); };
    const std::function<std::uint32_t()> call = plain;
    for (auto _ : state) {
        benchmark::DoNotOptimize(call());
    }
}
BENCHMARK(BM_Call_Plain);

void BM_Reference_AddRefRelease(benchmark::State& state)
{
    const Bench bench;
    for (auto _ : state) {
        const auto held = BasicServiceObjectPtr<BLDocument>::Retain(bench.Document());
        benchmark::DoNotOptimize(held.Get());
    }
}
BENCHMARK(BM_Reference_AddRefRelease);

void BM_Reference_SharedPtr(benchmark::State& state)
{
    const auto object = std::make_shared<int>(1);
    for (auto _ : state) {
        const auto held = object;
        benchmark::DoNotOptimize(held.get());
    }
}
BENCHMARK(BM_Reference_SharedPtr);

void BM_Event_FanOut(benchmark::State& state)
{
    const Bench bench;
    std::uint64_t calls = 0;
    SOEvent::SubscriptionList subscriptions;
    for (std::int64_t i = 0; i < state.range(0); ++i) {
        subscriptions.Append(BLDocument::Subscribe_OnAnnotChanged(
            bench.Document(), [&calls](PDAnnotOperation, unsigned int, _PDAnnotRec*) { ++calls; }));
    }
    auto& source = bench.Object().Event<BLDocument::OnAnnotChanged>();
    for (auto _ : state) {
        source.Fire(PDAnnotOperation::kAboutToChange, 0u, nullptr);
    }
    benchmark::DoNotOptimize(calls);
}
BENCHMARK(BM_Event_FanOut)->Arg(1)->Arg(10)->Arg(100);

void BM_Event_PlainFunctions(benchmark::State& state)
{
    std::uint64_t calls = 0;
    std::vector<std::function<void(PDAnnotOperation, unsigned int, _PDAnnotRec*)>> callables;
    for (std::int64_t i = 0; i < state.range(0); ++i) {
        callables.emplace_back([&calls](PDAnnotOperation, unsigned int, _PDAnnotRec*) { ++calls; });
    }
    for (auto _ : state) {
        for (const auto& callable : callables) {
            callable(PDAnnotOperation::kAboutToChange, 0u, nullptr);
        }
    }
    benchmark::DoNotOptimize(calls);
}
BENCHMARK(BM_Event_PlainFunctions)->Arg(1)->Arg(10)->Arg(100);

}  // namespace
