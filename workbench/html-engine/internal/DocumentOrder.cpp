#include "html-engine/internal/DocumentOrder.h"

#include "html-engine/internal/TreeWalk.h"

#include <algorithm>
#include <vector>

namespace HtmlEngine::Internal {

namespace {

// Labels at the open end of the document are set this far apart, so that appending does not halve
// the remaining room each time.
constexpr OrderLabel kAppendStride = OrderLabel{1} << 24;

// A neighbourhood is wide enough for relabelling when it leaves this much room per element.
constexpr OrderLabel kRoomWanted = OrderLabel{1} << 16;

}  // namespace

OrderLabel DocumentOrder::EndOf(NodeId id) const
{
    const NodeId after = ElementAfterSubtree(nodes_, id);
    return after == kNoNode ? kEndLabel : Of(after);
}

DocumentOrder::Room DocumentOrder::RoomFor(std::span<const NodeId> run) const
{
    const NodeId before = PreviousElement(nodes_, run.front());
    const NodeId after = NextElement(nodes_, run.back());
    const OrderLabel low = before == kNoNode ? 0 : Of(before);
    const OrderLabel high = after == kNoNode ? kEndLabel : Of(after);
    const OrderLabel room = high - low - 1;
    if (room < run.size()) {
        return {};
    }
    if (after == kNoNode && room / run.size() > kAppendStride) {
        return {low, kAppendStride};
    }
    return Between(low, high, run.size());
}

DocumentOrder::Room DocumentOrder::Between(OrderLabel low, OrderLabel high, std::size_t count)
{
    // high - low - 1 >= count, so the stride is at least 1 and the last label stays below high.
    return {low, std::max<OrderLabel>((high - low) / (count + 1), 1)};
}

void DocumentOrder::Spread(NodeStore& nodes, std::span<const NodeId> run, Room room)
{
    for (const NodeId id : run) {
        nodes[id].element.label = room.low += room.stride;
    }
}

void DocumentOrder::MakeRoom(std::span<const NodeId> run)
{
    NodeId before = PreviousElement(nodes_, run.front());
    NodeId after = NextElement(nodes_, run.back());
    std::vector<NodeId> left;
    std::vector<NodeId> right;
    std::size_t width = 16;
    while (true) {
        for (; before != kNoNode && left.size() < width; before = PreviousElement(nodes_, before)) {
            left.push_back(before);
        }
        for (; after != kNoNode && right.size() < width; after = NextElement(nodes_, after)) {
            right.push_back(after);
        }
        const OrderLabel low = before == kNoNode ? 0 : Of(before);
        const OrderLabel high = after == kNoNode ? kEndLabel : Of(after);
        const std::size_t count = left.size() + run.size() + right.size();
        if ((before == kNoNode && after == kNoNode) || (high - low) / (count + 1) >= kRoomWanted) {
            std::reverse(left.begin(), left.end());
            left.insert(left.end(), run.begin(), run.end());
            left.insert(left.end(), right.begin(), right.end());
            Spread(nodes_, left, Between(low, high, left.size()));
            return;
        }
        width *= 2;
    }
}

}  // namespace HtmlEngine::Internal
