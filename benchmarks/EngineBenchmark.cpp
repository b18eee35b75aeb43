// The HTML engine on the lists of the panel: taking in their HTML, beside the parser alone, and
// selectors by attribute, by state and by structure, beside a walk over the tree.
#include "PopulationArguments.h"

#include "ListRenderer.h"
#include "html-engine/Document.h"
#include "service-common/WideText.h"
#include "services/BLDocumentObject.h"
#include "services/Host.h"

#include <gumbo.h>

namespace {

// The HTML of a whole list.
std::string ListHtml(Documents::PopulationSize size)
{
    Workbench::Host host(Workbench::HostOptions{});
    host.StartPanel();
    const auto document = Workbench::BLDocumentObject::Make(
        std::make_shared<Workbench::HostState>(), MakePopulationDocument(size));
    ListRenderer renderer(document->AsInterface());
    return ToUtf8(renderer.RenderResults());
}

// A page with one container that shows a list whose middle item is current.
class ListPage {
public:
    explicit ListPage(Documents::PopulationSize size)
    {
        page_.Load("<div class=panel-content><div class=results-container></div></div>");
        page_.SelectFirst(page_.Root(), "div.results-container", results_);
        page_.SetHtml(results_, ListHtml(size), HtmlEngine::InsertPosition::ReplaceContent);
        const std::uint32_t middle = size.pages / 2;
        name_ = std::to_string(middle) + "_0";
        HtmlEngine::ElementHandle item = HtmlEngine::kNoElement;
        page_.SelectFirst(page_.Root(), "li[annot-name=\"" + name_ + "\"]", item);
        page_.SetState(item, 32, 0);
    }

    HtmlEngine::Document& Page() { return page_; }
    const std::string& Name() const { return name_; }

    // The first element in document order that satisfies the predicate, found by walking.
    template <class Predicate>
    HtmlEngine::ElementHandle Walk(Predicate matches) const
    {
        for (auto at = page_.Root(); at != HtmlEngine::kNoElement; at = Following(at)) {
            if (matches(at)) {
                return at;
            }
        }
        return HtmlEngine::kNoElement;
    }

private:
    HtmlEngine::ElementHandle Following(HtmlEngine::ElementHandle at) const
    {
        if (page_.ChildCount(at) > 0) {
            return page_.Child(at, 0);
        }
        while (at != HtmlEngine::kNoElement && page_.NextSibling(at) == HtmlEngine::kNoElement) {
            at = page_.Parent(at);
        }
        return at == HtmlEngine::kNoElement ? at : page_.NextSibling(at);
    }

    HtmlEngine::Document page_;
    HtmlEngine::ElementHandle results_ = HtmlEngine::kNoElement;
    std::string name_;
};

void Select(benchmark::State& state, const std::function<std::string(ListPage&)>& selector)
{
    ListPage list(PopulationOf(state));
    const std::string text = selector(list);
    for (auto _ : state) {
        HtmlEngine::ElementHandle found = HtmlEngine::kNoElement;
        list.Page().SelectFirst(list.Page().Root(), text, found);
        if (found == HtmlEngine::kNoElement) {
            state.SkipWithError("nothing found");
        }
    }
}

void SelectorArguments(benchmark::internal::Benchmark* benchmark)
{
    using namespace Documents;
    AddPopulations(benchmark, {kPopulationSmall, kPopulationMedium, kPopulationLarge});
    benchmark->Unit(benchmark::kMicrosecond);
}

void BM_Selector_Attribute(benchmark::State& state)
{
    Select(state, [](ListPage& list) {
        return "div.results-container li[annot-name=\"" + list.Name() + "\"]";
    });
}
BENCHMARK(BM_Selector_Attribute)->Apply(SelectorArguments);

void BM_Selector_AttributeByWalking(benchmark::State& state)
{
    const ListPage list(PopulationOf(state));
    for (auto _ : state) {
        benchmark::DoNotOptimize(list.Walk([&](HtmlEngine::ElementHandle element) {
            return list.Name() ==
                   const_cast<ListPage&>(list).Page().Attribute(element, "annot-name");
        }));
    }
}
BENCHMARK(BM_Selector_AttributeByWalking)->Apply(SelectorArguments);

void BM_Selector_State(benchmark::State& state)
{
    Select(state, [](ListPage&) { return "div.results-container li[annot-name]:current"; });
}
BENCHMARK(BM_Selector_State)->Apply(SelectorArguments);

void BM_Selector_StateByWalking(benchmark::State& state)
{
    ListPage list(PopulationOf(state));
    for (auto _ : state) {
        benchmark::DoNotOptimize(list.Walk([&](HtmlEngine::ElementHandle element) {
            return (list.Page().State(element) & 32) != 0;
        }));
    }
}
BENCHMARK(BM_Selector_StateByWalking)->Apply(SelectorArguments);

void BM_Selector_Structure(benchmark::State& state)
{
    Select(state, [](ListPage&) {
        return "div.results-container ul[page-item]:last-child li[page-index]:last-child "
               "li[annot-name]:last-child";
    });
}
BENCHMARK(BM_Selector_Structure)->Apply(SelectorArguments);

void BM_Selector_StructureByWalking(benchmark::State& state)
{
    ListPage list(PopulationOf(state));
    for (auto _ : state) {
        HtmlEngine::ElementHandle last = HtmlEngine::kNoElement;
        list.Walk([&](HtmlEngine::ElementHandle element) {
            if (list.Page().NextSibling(element) == HtmlEngine::kNoElement &&
                list.Page().Attribute(element, "annot-name")) {
                last = element;
            }
            return false;
        });
        benchmark::DoNotOptimize(last);
    }
}
BENCHMARK(BM_Selector_StructureByWalking)->Apply(SelectorArguments);

void BM_Engine_Intake(benchmark::State& state)
{
    const std::string html = ListHtml(PopulationOf(state));
    HtmlEngine::Document page;
    page.Load("<div class=results-container></div>");
    HtmlEngine::ElementHandle results = HtmlEngine::kNoElement;
    page.SelectFirst(page.Root(), "div.results-container", results);
    for (auto _ : state) {
        page.SetHtml(results, html, HtmlEngine::InsertPosition::ReplaceContent);
        state.PauseTiming();
        page.SetText(results, "");
        state.ResumeTiming();
    }
}
BENCHMARK(BM_Engine_Intake)->Apply(PopulationArguments);

void BM_Engine_ParserAlone(benchmark::State& state)
{
    const std::string html = ListHtml(PopulationOf(state));
    for (auto _ : state) {
        GumboOptions options = kGumboDefaultOptions;
        options.fragment_context = GUMBO_TAG_DIV;
        GumboOutput* output = gumbo_parse_with_options(&options, html.data(), html.size());
        state.PauseTiming();
        gumbo_destroy_output(&options, output);
        state.ResumeTiming();
    }
}
BENCHMARK(BM_Engine_ParserAlone)->Apply(PopulationArguments);

}  // namespace
