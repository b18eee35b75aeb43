// Keeps the labels of the attached elements: numbers that grow in document order, so that "before",
// "inside" and sorting are comparisons of numbers. New elements get labels between those of their
// neighbours; where there is no room left, a neighbourhood just wide enough is spread out again.
#pragma once

#include "html-engine/internal/NodeStore.h"

#include <cstdint>
#include <limits>
#include <span>

namespace HtmlEngine::Internal {

using OrderLabel = std::uint64_t;

constexpr OrderLabel kEndLabel = std::numeric_limits<OrderLabel>::max();

class DocumentOrder {
public:
    explicit DocumentOrder(NodeStore& nodes) : nodes_(nodes) {}

    OrderLabel Of(NodeId id) const { return nodes_[id].element.label; }

    // The label that ends the subtree: every element inside has a smaller one, every element after
    // it has this one or a greater one.
    OrderLabel EndOf(NodeId id) const;

    // Labels `run`, elements that were just linked into the tree, in document order and without
    // others between them. Calls `labelled(id)` with each of them as soon as its label is right
    // for good: what else is to be done with it is done while it is at hand.
    template <typename Function>
    void Label(std::span<const NodeId> run, Function&& labelled);

private:
    // The labels behind `low` in steps of `stride`.
    struct Room {
        OrderLabel low = 0;
        OrderLabel stride = 0;
    };

    // Room between the neighbours of `run`; a stride of 0 when there is not enough.
    Room RoomFor(std::span<const NodeId> run) const;
    static Room Between(OrderLabel low, OrderLabel high, std::size_t count);
    static void Spread(NodeStore& nodes, std::span<const NodeId> run, Room room);
    // Labels `run` and as many of its neighbours as need new ones for it.
    void MakeRoom(std::span<const NodeId> run);

    NodeStore& nodes_;
};

template <typename Function>
void DocumentOrder::Label(std::span<const NodeId> run, Function&& labelled)
{
    if (run.empty()) {
        return;
    }
    Room room = RoomFor(run);
    if (room.stride == 0) {
        MakeRoom(run);
    }
    for (const NodeId id : run) {
        if (room.stride != 0) {
            nodes_[id].element.label = room.low += room.stride;
        }
        labelled(id);
    }
}

}  // namespace HtmlEngine::Internal
