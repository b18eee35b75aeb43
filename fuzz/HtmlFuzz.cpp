// Any changes of a page by any markup: afterwards the tree is a tree, its index finds what asking
// each element finds, and what is written of it reads back as it is.
//
// Input: steps, each a kind, the number of an element, and a line of text; the last line is a
// selector too.

#include "FuzzTarget.h"
#include "html-engine/Document.h"

#include <vector>

namespace {

using namespace HtmlEngine;

constexpr std::string_view kPage =
    "<!DOCTYPE html><div class=results-container><ul page-item=0><li page-index=0>"
    "<div class=icon>Page</div><ul class=comments><li .highlight annot-name=0_0 titleid=t><h3>x"
    "</h3><p>a<br>b</p><popup id=t></popup></li><li annot-name=0_1></li></ul></li></ul></div>"
    "<table><tr><td>cell</td></tr></table><select><option>o</select>";
constexpr std::size_t kMostSteps = 12;
constexpr std::size_t kMostBytes = 4096;

std::vector<ElementHandle> ElementsOf(const Document& page)
{
    std::vector<ElementHandle> elements{page.Root()};
    for (std::size_t at = 0; at < elements.size(); ++at) {
        for (std::size_t child = 0; child < page.ChildCount(elements[at]); ++child) {
            elements.push_back(page.Child(elements[at], child));
        }
    }
    return elements;
}

void ChangePage(Document& page, InputReader& input, std::string& text)
{
    const unsigned kind = input.Byte() % 12;
    const std::vector<ElementHandle> elements = ElementsOf(page);
    const ElementHandle element = elements[input.Byte() % elements.size()];
    text = input.TextUntil('\n');
    switch (kind) {
    case 6:
        page.SetText(element, text);
        break;
    case 7:
        page.Delete(element);
        break;
    case 8:
        page.SetState(element, ElementState::kCurrent | ElementState::kExpanded, 0);
        break;
    case 9:
        page.SetAttribute(element, "annot-name", text);
        break;
    case 10:
        page.SetAttribute(element, text, text);
        break;
    case 11:
        page.SetStyle(element, "display", text);
        break;
    default:
        page.SetHtml(element, text, static_cast<InsertPosition>(kind));
    }
}

bool IsTree(const Document& page, const std::vector<ElementHandle>& elements)
{
    for (const ElementHandle element : elements) {
        const ElementHandle parent = page.Parent(element);
        if (!page.IsAttached(element) ||
            (parent == kNoElement ? element != page.Root()
                                  : page.Child(parent, page.IndexInParent(element)) != element)) {
            return false;
        }
    }
    return true;
}

bool FindsWhatMatches(const Document& page, const std::vector<ElementHandle>& elements,
                      std::string_view selector)
{
    std::size_t found = 0;
    bool allMatch = true;
    const auto countMatch = [&](ElementHandle element) {
        bool matches = false;
        page.Matches(element, selector, matches);
        allMatch = allMatch && matches;
        ++found;
        return true;
    };
    page.SelectAll(page.Root(), selector, countMatch);
    for (std::size_t at = 1; at < elements.size(); ++at) {
        bool matches = false;
        page.Matches(elements[at], selector, matches);
        found -= matches ? 1U : 0U;
    }
    return allMatch && found == 0;
}

std::string ReadBack(const std::string& html)
{
    Document page;
    page.Load(html);
    return "<!DOCTYPE html>" + page.OuterHtml(page.Root());
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view input = TextOf(data, size);
    if (size > kMostBytes) {
        return 0;
    }
    InputReader reader(input);
    Document page;
    page.Load(kPage);
    std::string text;
    for (std::size_t step = 0; step < kMostSteps && !reader.IsAtEnd(); ++step) {
        ChangePage(page, reader, text);
    }
    const std::vector<ElementHandle> elements = ElementsOf(page);
    if (!IsTree(page, elements)) {
        EndWithFault("Parents and children disagree.", input);
    }
    for (const std::string_view selector :
         {std::string_view("li[annot-name]:current"), std::string_view(".highlight > h3"),
          std::string_view("ul li:first-child"), std::string_view(text)}) {
        if (!FindsWhatMatches(page, elements, selector)) {
            EndWithFault("The index and the elements disagree.", input);
        }
    }
    const std::string once = ReadBack("<!DOCTYPE html>" + page.OuterHtml(page.Root()));
    if (ReadBack(once) != once) {
        EndWithFault("What was read and written reads back as something else.", input);
    }
    return 0;
}
