// Any bytes as a selector: what the index finds must be what asking each element finds, and a
// selector is either well formed or described as what it is not.

#include "FuzzTarget.h"
#include "html-engine/Document.h"

#include <string>
#include <vector>

namespace {

using namespace HtmlEngine;

constexpr std::string_view kPage =
    "<div class=panel-content id=a><div class=results-container>"
    "<ul page-item=0><li page-index=0><div class='icon document' localize></div><ul class=comments>"
    "<li .highlight annot-name=0_0 titleid=t><h3>x</h3><p>a<br>b</p><popup id=t></popup></li>"
    "<li .highlight .new annot-name=0_1 disabled></li><li annot-name=0_2></li></ul></li></ul>"
    "<ul page-item=1><li page-index=1><ul class=comments><li .a .b x='' y=\"1 2\"></li></ul></li>"
    "</ul></div></div><p lang=x id=b>text</p><!--c-->";

struct Page {
    Page()
    {
        document.Load(kPage);
        elements.push_back(document.Root());
        for (std::size_t at = 0; at < elements.size(); ++at) {
            for (std::size_t child = 0; child < document.ChildCount(elements[at]); ++child) {
                elements.push_back(document.Child(elements[at], child));
            }
        }
        constexpr std::uint32_t kStates[] = {ElementState::kHover,     ElementState::kActive,
                                             ElementState::kFocus,     ElementState::kExpanded,
                                             ElementState::kCollapsed, ElementState::kCurrent};
        for (std::size_t at = 0; at < elements.size(); ++at) {
            document.SetState(elements[at], kStates[at % std::size(kStates)], 0);
        }
    }

    Document document;
    // The root first.
    std::vector<ElementHandle> elements;
};

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const Page page;
    const std::string_view selector = TextOf(data, size);
    const ElementHandle root = page.elements.front();
    std::size_t found = 0;
    bool allMatch = true;
    ElementHandle firstFound = kNoElement;
    const auto collect = [&](ElementHandle element) {
        bool matches = false;
        page.document.Matches(element, selector, matches);
        allMatch = allMatch && matches;
        firstFound = found++ == 0 ? element : firstFound;
        return true;
    };
    const Result result = page.document.SelectAll(root, selector, collect);
    const bool isWellFormed = Document::DescribeSelectorProblem(selector).empty();
    if (isWellFormed != (result == Result::Success)) {
        EndWithFault("The description of the problem is not that of the result.", selector);
    }
    std::size_t matching = 0;
    for (const ElementHandle element : page.elements) {
        bool matches = false;
        page.document.Matches(element, selector, matches);
        matching += matches && element != root ? 1U : 0U;
    }
    ElementHandle first = kNoElement;
    page.document.SelectFirst(root, selector, first);
    if (!allMatch || matching != found || first != firstFound) {
        EndWithFault("The index and the elements disagree.", selector);
    }
    return 0;
}
