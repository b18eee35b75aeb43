// Positions of elements among their siblings. Parents with few children are counted through; for
// the others a list of the children is kept once it was asked for, and follows the changes.
#pragma once

#include "html-engine/internal/NodeStore.h"

#include <cstddef>
#include <unordered_map>
#include <vector>

namespace HtmlEngine::Internal {

class ChildPositions {
public:
    explicit ChildPositions(NodeStore& nodes) : nodes_(nodes) {}

    // The n-th element child, from 0; kNoNode beyond the last.
    NodeId Child(NodeId parent, std::size_t index);

    // Position among the element children of the parent; 0 without a parent.
    std::size_t IndexOf(NodeId element);

    // `first` and `count - 1` element siblings after it were linked under `parent`, whose count of
    // children says so already.
    void Inserted(NodeId parent, NodeId first, std::size_t count);

    // The same elements are about to be unlinked.
    void Removing(NodeId parent, NodeId first, std::size_t count);

    // The element is about to end, or all its children are about to go.
    void Forget(NodeId parent);

private:
    using List = std::vector<NodeId>;

    List& ListOf(NodeId parent);
    std::size_t Locate(List& list, NodeId element);

    NodeStore& nodes_;
    std::unordered_map<NodeId, List> lists_;
};

}  // namespace HtmlEngine::Internal
