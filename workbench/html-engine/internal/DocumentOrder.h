#pragma once

// Keeps the labels of the attached elements: numbers that grow in document order, so that "before",
// "inside" and sorting are comparisons of numbers. New elements get labels between those of their
// neighbours; where there is no room left, a neighbourhood just wide enough is spread out again.

#include <cstdint>
#include <limits>
#include <span>

#include <html-engine/internal/NodeStore.h>

namespace HtmlEngine::Internal {

using OrderLabel = std::uint64_t;

constexpr OrderLabel kEndLabel = std::numeric_limits<OrderLabel>::max();

class DocumentOrder {
public:
    explicit DocumentOrder(NodeStore& nodes) : nodes_(nodes) {}

    OrderLabel Of(NodeId id) const { return nodes_[id].element.label; }

    /// The label that ends the subtree: every element inside has a smaller one, every element after
    /// it has this one or a greater one.
    OrderLabel EndOf(NodeId id) const;

    /// Labels `run`, elements that were just linked into the tree, in document order and without
    /// others between them.
    void Label(std::span<const NodeId> run);

private:
    static void Spread(NodeStore& nodes, std::span<const NodeId> run, OrderLabel low, OrderLabel high);
    void MakeRoom(std::span<const NodeId> run, NodeId before, NodeId after);

    NodeStore& nodes_;
};

}  // namespace HtmlEngine::Internal
