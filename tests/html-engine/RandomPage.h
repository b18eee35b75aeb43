// A random page that is changed at random by every operation that a Document has, for tests that
// hold it against something else after each step.
#pragma once

#include "RandomSelector.h"
#include "TestPage.h"

#include <functional>
#include <vector>

namespace HtmlEngine::Test {

// Every element below `root`, in document order.
std::vector<ElementHandle> Below(const Document& document, ElementHandle root);

// Calls `round` with each of a few seeds, until a test has failed. HTML_ENGINE_TEST_SEED, which a
// failure names, makes it one.
void ForEachSeed(unsigned rounds, const std::function<void(unsigned seed)>& round);

class RandomPage {
public:
    explicit RandomPage(unsigned seed);

    void Change();

    // An element below `top`, or `top` itself where there is none.
    ElementHandle AnyElement(ElementHandle top);

    // The elements in use, in the page or detached.
    const std::vector<ElementHandle>& Kept() const { return kept_; }

    Random random;
    TestPage page;

private:
    // Markup that may begin or end with text or with a comment.
    std::string AnyMarkup();

    std::vector<ElementHandle> kept_;
};

}  // namespace HtmlEngine::Test
