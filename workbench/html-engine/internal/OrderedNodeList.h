// Elements sorted in document order, in blocks of bounded size: finding a place costs a binary
// search, adding or removing moves at most one block, and a part of the tree is a contiguous range.
#pragma once

#include "html-engine/internal/DocumentOrder.h"

#include <cstddef>
#include <vector>

namespace HtmlEngine::Internal {

class OrderedNodeList {
public:
    // A place in the list; void after a change of it.
    struct Cursor {
        std::size_t block = 0;
        std::size_t position = 0;
    };

    std::size_t Size() const { return size_; }

    void Insert(NodeId id, const DocumentOrder& order);

    // Does nothing when the element is not there.
    void Erase(NodeId id, const DocumentOrder& order);

    // Removes every element whose label is in [low, high).
    void EraseRange(OrderLabel low, OrderLabel high, const DocumentOrder& order);

    // The place of the first element whose label is not below `label`.
    Cursor LowerBound(OrderLabel label, const DocumentOrder& order) const;

    // The element at a place, kNoNode at the end.
    NodeId At(Cursor cursor) const
    {
        return cursor.block < blocks_.size() ? blocks_[cursor.block][cursor.position] : kNoNode;
    }

    Cursor Next(Cursor cursor) const
    {
        return cursor.position + 1 < blocks_[cursor.block].size()
                   ? Cursor{cursor.block, cursor.position + 1}
                   : Cursor{cursor.block + 1, 0};
    }

private:
    using Block = std::vector<NodeId>;

    static constexpr std::size_t kBlockLimit = 512;

    void InsertAt(Cursor cursor, NodeId id);
    bool FollowsLastInsertion(OrderLabel label, const DocumentOrder& order) const;

    // None of them is empty.
    std::vector<Block> blocks_;
    std::size_t size_ = 0;
    // Where the last element went in: the next one often belongs right behind it.
    Cursor lastInsertion_;
};

}  // namespace HtmlEngine::Internal
