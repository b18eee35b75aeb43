// What a user or a document does to a loaded list, on the UI thread until the DOM stands, beside a
// posted task that does nothing.
#include "PanelSession.h"
#include "PopulationArguments.h"

#include "ui-engine/UIHandler.SO.h"

#include <chrono>
#include <functional>

namespace {

void InteractionArguments(benchmark::internal::Benchmark* benchmark)
{
    using namespace Documents;
    AddPopulations(benchmark, {kPopulationSmall, kPopulationMedium, kPopulationLarge});
    benchmark->Unit(benchmark::kMicrosecond)->UseManualTime();
}

using Step = std::function<void(PanelSession& session, bool odd)>;

// Times `step`; `restore` undoes what it did, untimed.
void Measure(benchmark::State& state, const Step& step, const Step& restore = nullptr)
{
    PanelSession session(PopulationOf(state));
    session.Open();
    bool odd = false;
    for (auto _ : state) {
        const auto begin = std::chrono::steady_clock::now();
        step(session, odd);
        session.Run();
        state.SetIterationTime(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
        if (restore) {
            restore(session, odd);
        }
        odd = !odd;
    }
    // A step that the panel refuses would be a quick one.
    if (!session.TheHost().State().failures.Take().empty()) {
        state.SkipWithError("the panel failed");
    }
}

// In the middle of the list.
std::uint32_t MiddlePage(PanelSession& session)
{
    return session.Document().PageCount() / 2;
}
std::string MiddleItem(PanelSession& session, bool odd)
{
    return std::to_string(MiddlePage(session)) + (odd ? "_1" : "_0");
}

void PressKey(PanelSession& session, std::uint32_t key)
{
    session.TheHost().Panel().PressKey(session.Find("li[annot-name]:current"), key);
}

void BM_Interaction_EmptyTask(benchmark::State& state)
{
    Measure(state, [](PanelSession& session, bool) { session.TheHost().State().loop.Post([] {}); });
}
BENCHMARK(BM_Interaction_EmptyTask)->Apply(InteractionArguments);

void BM_Interaction_Key(benchmark::State& state)
{
    Measure(state, [](PanelSession& session, bool odd) {
        PressKey(session, odd ? kKeyUpArrow : kKeyDownArrow);
    });
}
BENCHMARK(BM_Interaction_Key)->Apply(InteractionArguments);

void BM_Interaction_Click(benchmark::State& state)
{
    Measure(state, [](PanelSession& session, bool odd) {
        session.TheHost().Panel().Click(session.Item(MiddleItem(session, odd)));
    });
}
BENCHMARK(BM_Interaction_Click)->Apply(InteractionArguments);

void BM_Interaction_Focus(benchmark::State& state)
{
    Measure(state, [](PanelSession& session, bool odd) {
        const std::uint32_t page = MiddlePage(session);
        session.View().SetFocus(page, session.Document().AnnotationAt(page, odd ? 1 : 0));
    });
}
BENCHMARK(BM_Interaction_Focus)->Apply(InteractionArguments);

void BM_Interaction_Edit(benchmark::State& state)
{
    Measure(state, [](PanelSession& session, bool odd) {
        session.Publish(session.Document().ChangeContents(
            MiddlePage(session), 1, odd ? u"A remark.\nIn two lines." : u"Another remark."));
    });
}
BENCHMARK(BM_Interaction_Edit)->Apply(InteractionArguments);

void UndoEdit(PanelSession& session, bool)
{
    session.Publish(session.Document().Undo());
}

void BM_Interaction_Add(benchmark::State& state)
{
    Measure(
        state,
        [](PanelSession& session, bool) {
            session.Publish(
                session.Document().AddAnnotation(MiddlePage(session), "Highlight", u"A remark."));
        },
        UndoEdit);
}
BENCHMARK(BM_Interaction_Add)->Apply(InteractionArguments);

void BM_Interaction_Delete(benchmark::State& state)
{
    Measure(
        state, [](PanelSession& session, bool) { PressKey(session, kKeyDelete); },
        [](PanelSession& session, bool odd) {
            UndoEdit(session, odd);
            session.View().SetFocus(MiddlePage(session),
                                    session.Document().AnnotationAt(MiddlePage(session), 0));
        });
}
BENCHMARK(BM_Interaction_Delete)->Apply(InteractionArguments);

}  // namespace
