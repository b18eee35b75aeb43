// Random trees, random changes, random selectors: the engine's answers against the walking matcher,
// in the page and in detached trees.

#include <cstdlib>

#include "RandomSelector.h"
#include "TestPage.h"

namespace HtmlEngine::Test {
namespace {

/// Every element below `root`, in document order.
std::vector<ElementHandle> Below(const Document& document, ElementHandle root) {
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

class Agreement {
public:
    explicit Agreement(unsigned seed) : random_(seed), page_(RandomMarkup(random_, 4)) {}

    void Change() {
        const ElementHandle element = AnyElement(page_->Root());
        switch (Pick(random_, 9)) {
        case 0:
        case 1:
            page_->SetHtml(element, RandomMarkup(random_, static_cast<int>(Pick(random_, 4))),
                           static_cast<InsertPosition>(Pick(random_, 6)));
            break;
        case 2:
            if (Below(*page_, element).size() < 30) {
                page_->Delete(element);
            }
            break;
        case 3:
            page_->SetText(element, Pick(random_, 2) == 0 ? "t" : "");
            break;
        case 4:
            page_->SetState(element, 1U << Pick(random_, 11), 1U << Pick(random_, 11));
            break;
        case 5:
            page_->SetAttribute(element, Pick(random_, 2) == 0 ? "annot-name" : ".rare",
                                Pick(random_, 2) == 0 ? "0_1" : "1");
            break;
        case 6:
            page_->RemoveAttribute(element, Pick(random_, 2) == 0 ? "page-item" : ".a");
            break;
        case 7:
            page_->SetStyle(element, "visibility", Pick(random_, 2) == 0 ? "collapse" : "");
            break;
        default:
            if (kept_.size() < 4) {
                page_->Use(element);
                kept_.push_back(element);
            } else {
                page_->Unuse(kept_.back());
                kept_.pop_back();
            }
            break;
        }
        if (Below(*page_, page_->Root()).size() < 10) {
            page_->SetHtml(page_.Body(), RandomMarkup(random_, 4), InsertPosition::ReplaceContent);
        }
    }

    void Compare() {
        ElementHandle top = page_->Root();
        if (!kept_.empty() && Pick(random_, 4) == 0) {
            top = kept_[Pick(random_, kept_.size())];
        }
        const ElementHandle root = Pick(random_, 2) == 0 ? top : AnyElement(top);
        const RandomSelector selector(random_);
        std::vector<ElementHandle> expected;
        for (const ElementHandle element : Below(*page_, root)) {
            if (selector.Matches(*page_, element, root)) {
                expected.push_back(element);
            }
        }
        ASSERT_EQ(page_.All(root, selector.Text()), expected) << selector.Text() << "\n" << page_->OuterHtml(top);

        const ElementHandle element = AnyElement(top);
        bool matches = false;
        page_->Matches(element, selector.Text(), matches);
        ASSERT_EQ(matches, selector.Matches(*page_, element, page_->Root())) << selector.Text();
        ElementHandle nearest = kNoElement;
        page_->Closest(element, selector.Text(), nearest);
        ElementHandle walked = element;
        while (walked != kNoElement && !selector.Matches(*page_, walked, page_->Root())) {
            walked = page_->Parent(walked);
        }
        ASSERT_EQ(nearest, walked) << selector.Text();
    }

    /// What is known of each element must be what its links say.
    void CompareCounts() {
        for (const ElementHandle element : Below(*page_, page_->Root())) {
            std::size_t count = 0;
            for (ElementHandle child = page_->Child(element, 0); child != kNoElement; child = page_->NextSibling(child)) {
                ASSERT_EQ(page_->IndexInParent(child), count++);
                ASSERT_EQ(page_->Parent(child), element);
            }
            ASSERT_EQ(page_->ChildCount(element), count);
        }
    }

    /// Parsed markup, written and parsed again, must be the same tree.
    void CompareReparsed() {
        const TestPage parsed(RandomMarkup(random_, 4));
        const std::string html = parsed.document.OuterHtml(parsed.document.Root());
        Document again;
        again.LoadPage(html);
        ASSERT_EQ(again.OuterHtml(again.Root()), html);
    }

private:
    ElementHandle AnyElement(ElementHandle top) {
        const std::vector<ElementHandle> elements = Below(*page_, top);
        return elements.empty() ? top : elements[Pick(random_, elements.size())];
    }

    Random random_;
    TestPage page_;
    std::vector<ElementHandle> kept_;
};

TEST(SelectorAgreement, IndexAndWalkFindTheSame) {
    const char* const given = std::getenv("HTML_ENGINE_TEST_SEED");
    const unsigned first =
        given != nullptr ? static_cast<unsigned>(std::strtoul(given, nullptr, 10)) : std::random_device{}();
    const unsigned rounds = given != nullptr ? 1 : 12;
    for (unsigned seed = first; seed != first + rounds; ++seed) {
        SCOPED_TRACE("HTML_ENGINE_TEST_SEED=" + std::to_string(seed));
        Agreement agreement(seed);
        for (int step = 0; step < 150; ++step) {
            agreement.Change();
            for (int query = 0; query < 6; ++query) {
                ASSERT_NO_FATAL_FAILURE(agreement.Compare());
            }
        }
        ASSERT_NO_FATAL_FAILURE(agreement.CompareCounts());
        ASSERT_NO_FATAL_FAILURE(agreement.CompareReparsed());
    }
}

}  // namespace
}  // namespace HtmlEngine::Test
