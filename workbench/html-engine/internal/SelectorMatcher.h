// Decides whether one element matches a selector, from right to left, by the rules alone and
// without the index. Works in detached trees too.
#pragma once

#include "html-engine/internal/Selector.h"
#include "html-engine/internal/Tree.h"

namespace HtmlEngine::Internal {

class SelectorMatcher {
public:
    // `root` is what `:root` means; kNoNode when nothing is.
    SelectorMatcher(const Tree& tree, NodeId root) : tree_(tree), nodes_(tree.Nodes()), root_(root)
    {
    }

    bool Matches(NodeId element, const Selector& selector) const;

    // Whether the element matches the compounds 0 to `last` of a complex selector, itself being
    // the one that `last` describes.
    bool MatchesUpTo(NodeId element, const ComplexSelector& complex, std::size_t last) const
    {
        return Match(element, complex, last) == Outcome::Match;
    }

private:
    // A failure says how far it reaches, so that no ancestor or sibling is tried in vain.
    enum class Outcome { Match, FailsHere, FailsForSiblings, FailsForAncestors };

    Outcome Match(NodeId element, const ComplexSelector& complex, std::size_t last) const;
    bool MatchesAll(NodeId element, const std::vector<Condition>& conditions) const;
    bool MatchesCondition(NodeId element, const Condition& condition) const;
    bool MatchesAttributeValue(NodeId element, const Condition& condition) const;
    bool IsEmpty(NodeId element) const;

    const Tree& tree_;
    const NodeStore& nodes_;
    NodeId root_;
};

}  // namespace HtmlEngine::Internal
