#include "RandomPage.h"

#include <cstdlib>

namespace HtmlEngine::Test {

std::vector<ElementHandle> Below(const Document& document, ElementHandle root)
{
    std::vector<ElementHandle> found;
    ElementHandle element = document.Child(root, 0);
    while (element != kNoElement) {
        found.push_back(element);
        ElementHandle next = document.Child(element, 0);
        for (; next == kNoElement && element != root; element = document.Parent(element)) {
            next = document.NextSibling(element);
        }
        element = next;
    }
    return found;
}

void ForEachSeed(unsigned rounds, const std::function<void(unsigned seed)>& round)
{
    const char* const given = std::getenv("HTML_ENGINE_TEST_SEED");
    const unsigned first = given != nullptr
                               ? static_cast<unsigned>(std::strtoul(given, nullptr, 10))
                               : std::random_device{}();
    rounds = given != nullptr ? 1 : rounds;
    for (unsigned seed = first; seed != first + rounds && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE("HTML_ENGINE_TEST_SEED=" + std::to_string(seed));
        round(seed);
    }
}

RandomPage::RandomPage(unsigned seed) : random(seed), page(RandomMarkup(random, 4)) {}

void RandomPage::Change()
{
    const ElementHandle element = AnyElement(page->Root());
    const bool coin = Pick(random, 2) == 0;
    switch (Pick(random, 9)) {
    case 0:
    case 1:
        page->SetHtml(element, AnyMarkup(), static_cast<InsertPosition>(Pick(random, 6)));
        break;
    case 2:
        if (Below(*page, element).size() < 30) {
            page->Delete(element);
        }
        break;
    case 3:
        page->SetText(element, coin ? "t" : "");
        break;
    case 4:
        page->SetState(element, 1U << Pick(random, 11), 1U << Pick(random, 11));
        break;
    case 5: {
        constexpr std::string_view kNames[] = {"annot-name", ".rare", "disabled"};
        page->SetAttribute(element, kNames[Pick(random, 3)], coin ? "0_1" : "1");
        break;
    }
    case 6: {
        constexpr std::string_view kNames[] = {"page-item", ".a", "disabled"};
        page->RemoveAttribute(element, kNames[Pick(random, 3)]);
        break;
    }
    case 7:
        page->SetStyle(element, "visibility", coin ? "collapse" : "");
        break;
    default:
        if (kept_.size() < 4) {
            page->Use(element);
            kept_.push_back(element);
        } else {
            page->Unuse(kept_.back());
            kept_.pop_back();
        }
        break;
    }
    if (Below(*page, page->Root()).size() < 10) {
        page->SetHtml(page.Body(), RandomMarkup(random, 4), InsertPosition::ReplaceContent);
    } else if (Pick(random, 100) == 0) {
        page->Load(RandomMarkup(random, 4));
    }
}

std::string RandomPage::AnyMarkup()
{
    constexpr std::string_view kEnds[] = {"", "", "t", "<!--c-->", "<svg><g></g></svg>"};
    std::string html(kEnds[Pick(random, 5)]);
    html += RandomMarkup(random, static_cast<int>(Pick(random, 4)));
    html += kEnds[Pick(random, 5)];
    return html;
}

ElementHandle RandomPage::AnyElement(ElementHandle top)
{
    const std::vector<ElementHandle> elements = Below(*page, top);
    return elements.empty() ? top : elements[Pick(random, elements.size())];
}

}  // namespace HtmlEngine::Test
