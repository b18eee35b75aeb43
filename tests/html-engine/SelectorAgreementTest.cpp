// Random trees, random changes, random selectors: the engine's answers against the walking matcher,
// in the page and in detached trees.

#include "RandomPage.h"

namespace HtmlEngine::Test {
namespace {

class Agreement {
public:
    explicit Agreement(unsigned seed) : changing_(seed) {}

    void Change() { changing_.Change(); }

    void Compare()
    {
        ElementHandle top = page_->Root();
        const std::vector<ElementHandle>& kept = changing_.Kept();
        if (!kept.empty() && Pick(random_, 4) == 0) {
            top = kept[Pick(random_, kept.size())];
        }
        const ElementHandle root = Pick(random_, 2) == 0 ? top : AnyElement(top);
        const RandomSelector selector(random_);
        std::vector<ElementHandle> expected;
        for (const ElementHandle element : Below(*page_, root)) {
            if (selector.Matches(*page_, element, root)) {
                expected.push_back(element);
            }
        }
        ASSERT_EQ(page_.All(root, selector.Text()), expected) << selector.Text() << "\n"
                                                              << page_->OuterHtml(top);

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

    // What is known of each element must be what its links say.
    void CompareCounts()
    {
        for (const ElementHandle element : Below(*page_, page_->Root())) {
            std::size_t count = 0;
            for (ElementHandle child = page_->Child(element, 0); child != kNoElement;
                 child = page_->NextSibling(child)) {
                ASSERT_EQ(page_->IndexInParent(child), count++);
                ASSERT_EQ(page_->Parent(child), element);
            }
            ASSERT_EQ(page_->ChildCount(element), count);
        }
    }

    // Parsed markup, written and parsed again, must be the same tree.
    void CompareReparsed()
    {
        const TestPage parsed(RandomMarkup(random_, 4));
        const std::string html = parsed.document.OuterHtml(parsed.document.Root());
        Document again;
        again.Load(html);
        ASSERT_EQ(again.OuterHtml(again.Root()), html);
    }

private:
    ElementHandle AnyElement(ElementHandle top) { return changing_.AnyElement(top); }

    RandomPage changing_;
    Random& random_ = changing_.random;
    TestPage& page_ = changing_.page;
};

TEST(SelectorAgreement, IndexAndWalkFindTheSame)
{
    ForEachSeed(12, [](unsigned seed) {
        Agreement agreement(seed);
        for (int step = 0; step < 150; ++step) {
            agreement.Change();
            for (int query = 0; query < 6; ++query) {
                ASSERT_NO_FATAL_FAILURE(agreement.Compare());
            }
        }
        ASSERT_NO_FATAL_FAILURE(agreement.CompareCounts());
        ASSERT_NO_FATAL_FAILURE(agreement.CompareReparsed());
    });
}

}  // namespace
}  // namespace HtmlEngine::Test
