// What a loading costs besides time: the longest slice of the UI thread apart from the engine's
// taking in the HTML, the memory on the way beside the bytes of the HTML, and what stays of it.
#include "PanelSession.h"
#include "PopulationArguments.h"

#include "html-engine/TreeObserver.h"

#include <malloc.h>

#include <algorithm>
#include <chrono>
#include <optional>

namespace {

using Clock = std::chrono::steady_clock;

// Notes when an insertion into the page was over.
class InsertionWatch final : public HtmlEngine::TreeObserver {
public:
    void OnInserted(HtmlEngine::NodeHandle, HtmlEngine::NodeHandle, HtmlEngine::NodeHandle,
                    HtmlEngine::NodeHandle) noexcept override
    {
        lastEnd = Clock::now();
    }
    void OnRemoved(HtmlEngine::NodeHandle, HtmlEngine::NodeHandle, HtmlEngine::NodeHandle,
                   HtmlEngine::NodeHandle) noexcept override
    {
    }
    void OnTextChanged(HtmlEngine::NodeHandle) noexcept override {}
    void OnAttributesChanged(HtmlEngine::NodeHandle) noexcept override {}
    void OnStatesChanged(HtmlEngine::NodeHandle) noexcept override {}
    void OnPageReplaced() noexcept override {}

    std::optional<Clock::time_point> lastEnd;
};

void BM_Loading_LongestSlice(benchmark::State& state)
{
    InsertionWatch watch;
    for (auto _ : state) {
        PanelSession session(PopulationOf(state));
        auto& host = session.TheHost();
        host.Panel().Document()->SetObserver(&watch);
        double longest = 0;
        const auto measure = [&](const auto& run) {
            watch.lastEnd.reset();
            const auto begin = Clock::now();
            run();
            const auto from = watch.lastEnd.value_or(begin);
            longest = std::max(longest, std::chrono::duration<double>(Clock::now() - from).count());
        };
        measure([&] { host.OpenView(session.SharedDocument()); });
        while (!host.IsIdle()) {
            measure([&] { host.State().loop.RunNext(); });
        }
        state.SetIterationTime(longest);
        host.Panel().Document()->SetObserver(nullptr);
    }
}
BENCHMARK(BM_Loading_LongestSlice)->Apply(PopulationArguments)->UseManualTime();

std::size_t BytesInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

// The bytes that the engine needs for a list.
std::size_t BytesOfNodes(const std::string& html)
{
    const std::size_t before = BytesInUse();
    HtmlEngine::Document page;
    page.Load("<div class=results-container></div>");
    HtmlEngine::ElementHandle results = HtmlEngine::kNoElement;
    page.SelectFirst(page.Root(), "div.results-container", results);
    page.SetHtml(results, html, HtmlEngine::InsertPosition::ReplaceContent);
    return BytesInUse() - before;
}

// Counters: the bytes of the list's HTML and, as multiples of them, what is allocated beyond the
// document's own when the rendering waits to land, and what of that is left when it has landed,
// beyond what the engine needs for the list.
void BM_Loading_Memory(benchmark::State& state)
{
    for (auto _ : state) {
        PanelSession session(PopulationOf(state));
        auto& loop = session.TheHost().State().loop;
        const std::size_t before = BytesInUse();
        loop.Hold(true);
        session.Open();
        const std::size_t held = BytesInUse();
        loop.Hold(false);
        session.TheHost().RunUntilIdle();
        const std::size_t landed = BytesInUse();

        const std::string html =
            session.TheHost().Panel().Document()->InnerHtml(session.Find("div.results-container"));
        const auto multiple = [&](std::size_t bytes, std::size_t less) {
            return (static_cast<double>(bytes) - static_cast<double>(less)) /
                   static_cast<double>(html.size());
        };
        state.counters["html_bytes"] = static_cast<double>(html.size());
        state.counters["held"] = multiple(held, before);
        state.counters["left"] = multiple(landed, before + BytesOfNodes(html));
    }
}
BENCHMARK(BM_Loading_Memory)->Apply(PopulationArguments)->Iterations(1);

}  // namespace
