#include "html-engine/internal/OrderedNodeList.h"

#include <algorithm>
#include <iterator>

namespace HtmlEngine::Internal {

namespace {

using Distance = std::ptrdiff_t;

}  // namespace

OrderedNodeList::Cursor OrderedNodeList::LowerBound(OrderLabel label,
                                                    const DocumentOrder& order) const
{
    const auto block = std::partition_point(
        blocks_.begin(), blocks_.end(), [&](const Block& b) { return order.Of(b.back()) < label; });
    if (block == blocks_.end()) {
        return {blocks_.size(), 0};
    }
    const auto place = std::partition_point(block->begin(), block->end(),
                                            [&](NodeId id) { return order.Of(id) < label; });
    return {static_cast<std::size_t>(block - blocks_.begin()),
            static_cast<std::size_t>(place - block->begin())};
}

bool OrderedNodeList::FollowsLastInsertion(OrderLabel label, const DocumentOrder& order) const
{
    if (lastInsertion_.block >= blocks_.size() ||
        lastInsertion_.position >= blocks_[lastInsertion_.block].size() ||
        order.Of(At(lastInsertion_)) >= label) {
        return false;
    }
    const NodeId next = At(Next(lastInsertion_));
    return next == kNoNode || order.Of(next) > label;
}

void OrderedNodeList::Insert(NodeId id, const DocumentOrder& order)
{
    const OrderLabel label = order.Of(id);
    Cursor cursor;
    if (FollowsLastInsertion(label, order)) {
        cursor = {lastInsertion_.block, lastInsertion_.position + 1};
    } else {
        cursor = LowerBound(label, order);
        if (cursor.block == blocks_.size() && !blocks_.empty()) {
            cursor = {blocks_.size() - 1, blocks_.back().size()};
        }
    }
    InsertAt(cursor, id);
}

void OrderedNodeList::InsertAt(Cursor cursor, NodeId id)
{
    if (blocks_.empty()) {
        blocks_.emplace_back();
        cursor = {0, 0};
    }
    if (blocks_[cursor.block].size() >= kBlockLimit) {
        const bool atVeryEnd = cursor.block + 1 == blocks_.size() && cursor.position == kBlockLimit;
        // Appending fills blocks to the brim; elsewhere a full block is halved.
        const std::size_t keep = atVeryEnd ? kBlockLimit : kBlockLimit / 2;
        Block rest(blocks_[cursor.block].begin() + static_cast<Distance>(keep),
                   blocks_[cursor.block].end());
        blocks_[cursor.block].resize(keep);
        blocks_.insert(blocks_.begin() + static_cast<Distance>(cursor.block) + 1, std::move(rest));
        if (atVeryEnd || cursor.position > keep) {
            cursor = {cursor.block + 1, cursor.position - keep};
        }
    }
    Block& block = blocks_[cursor.block];
    block.insert(block.begin() + static_cast<Distance>(cursor.position), id);
    ++size_;
    lastInsertion_ = cursor;
}

void OrderedNodeList::Erase(NodeId id, const DocumentOrder& order)
{
    const Cursor cursor = LowerBound(order.Of(id), order);
    if (At(cursor) != id) {
        return;
    }
    Block& block = blocks_[cursor.block];
    block.erase(block.begin() + static_cast<Distance>(cursor.position));
    if (block.empty()) {
        blocks_.erase(blocks_.begin() + static_cast<Distance>(cursor.block));
    }
    --size_;
}

void OrderedNodeList::EraseRange(OrderLabel low, OrderLabel high, const DocumentOrder& order)
{
    const Cursor first = LowerBound(low, order);
    const Cursor end = LowerBound(high, order);
    const auto eraseIn = [&](std::size_t index, std::size_t from, std::size_t to) {
        Block& block = blocks_[index];
        block.erase(block.begin() + static_cast<Distance>(from),
                    block.begin() + static_cast<Distance>(to));
        size_ -= to - from;
    };
    if (first.block == blocks_.size()) {
        return;
    }
    if (first.block == end.block) {
        eraseIn(first.block, first.position, end.position);
    } else {
        eraseIn(first.block, first.position, blocks_[first.block].size());
        for (std::size_t index = first.block + 1; index < end.block; ++index) {
            eraseIn(index, 0, blocks_[index].size());
        }
        if (end.block < blocks_.size()) {
            eraseIn(end.block, 0, end.position);
        }
    }
    const auto from = blocks_.begin() + static_cast<Distance>(first.block);
    const auto to = end.block < blocks_.size()
                        ? blocks_.begin() + static_cast<Distance>(end.block) + 1
                        : blocks_.end();
    blocks_.erase(std::remove_if(from, to, [](const Block& block) { return block.empty(); }), to);
}

}  // namespace HtmlEngine::Internal
