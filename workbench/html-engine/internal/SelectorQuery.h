// Finds the elements below a root that match a selector. In the page's tree the index provides the
// candidates; a detached tree is walked.
//
// For each complex selector a few of its compounds are chosen as steps, from left to right, each
// much rarer than the next, and the last compound always the last step. The first step's candidates
// inside the root are tried in document order; inside each that matches, the next step's, and so
// on. Every candidate is checked by the rules against all compounds up to its own, so the steps
// only decide where to look. Matches inside an earlier match of the same step are not entered
// again: its part of the tree has been searched. So the results come in document order, each once.
#pragma once

#include "html-engine/internal/Selector.h"
#include "html-engine/internal/SelectorMatcher.h"
#include "html-engine/internal/Tree.h"

#include <functional>
#include <vector>

namespace HtmlEngine::Internal {

class SelectorQuery {
public:
    SelectorQuery(const Tree& tree, NodeId root, const Selector& selector)
        : tree_(tree), nodes_(tree.Nodes()), root_(root), selector_(selector), matcher_(tree, root)
    {
    }

    // The first match in document order, or kNoNode.
    NodeId First() const;

    // Every match in document order.
    std::vector<NodeId> All() const;

private:
    // Called with a match; false ends the search.
    using Found = std::function<bool(NodeId)>;

    struct Step {
        std::size_t compound = 0;
        // Null: every element is a candidate.
        const IndexEntry* candidates = nullptr;
        bool isRoot = false;
    };

    using Steps = std::vector<Step>;

    bool FindSteps(const ComplexSelector& complex, Steps& steps) const;
    std::size_t CheapestKey(const Compound& compound, Step& step) const;
    bool IndexKeyOf(const Compound& compound, const Condition& condition, IndexKey& key) const;

    bool Search(const ComplexSelector& complex, const Found& found) const;
    bool Walk(const Found& found) const;
    bool Enter(const ComplexSelector& complex, const Steps& steps, std::size_t step, NodeId scope,
               const Found& found) const;
    bool RootSatisfies(const ComplexSelector& complex, const Step& step) const;

    // Calls `candidate` with each candidate of a step below `scope` in document order, until it
    // returns false. It returns the label from which on to continue.
    template <typename Candidate>
    bool ForEachCandidate(const Step& step, NodeId scope, Candidate&& candidate) const;

    const Tree& tree_;
    const NodeStore& nodes_;
    NodeId root_;
    const Selector& selector_;
    SelectorMatcher matcher_;
};

}  // namespace HtmlEngine::Internal
