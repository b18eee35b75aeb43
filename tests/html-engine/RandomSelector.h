// Random selectors as data of their own, with their text and a matcher that walks the public tree
// by the book: what the indexed engine is held against.
#pragma once

#include "html-engine/Document.h"

#include <random>
#include <string>
#include <vector>

namespace HtmlEngine::Test {

using Random = std::mt19937;

// A number in [0, count).
inline std::size_t Pick(Random& random, std::size_t count)
{
    return std::uniform_int_distribution<std::size_t>(0, count - 1)(random);
}

class RandomSelector {
public:
    explicit RandomSelector(Random& random);

    std::string Text() const;

    // `root` is what :root means.
    bool Matches(const Document& document, ElementHandle element, ElementHandle root) const;

private:
    struct Test {
        // What stands in the selector.
        std::string text;
        bool (*holds)(const Document&, ElementHandle, const Test&, ElementHandle root);
        std::string name;
        std::string value;
        std::uint32_t number = 0;
        bool negated = false;
    };

    struct Part {
        // ' ', '>', '+' or '~' to the part before.
        char combinator = ' ';
        std::vector<Test> tests;
    };

    using Chain = std::vector<Part>;

    static Test MakeTest(Random& random);
    static bool MatchesChain(const Document& document, ElementHandle element, ElementHandle root,
                             const Chain& chain, std::size_t last);

    std::vector<Chain> chains_;
};

// Random list-like markup out of a few names, so that selectors meet something.
std::string RandomMarkup(Random& random, int depth);

}  // namespace HtmlEngine::Test
