// Storage of a document's nodes: blocks of slots that never move. The slot of a destroyed node is
// reused under a new generation, so that an old handle never refers to a new element. Memory of
// destroyed nodes is kept for later ones.
#pragma once

#include "html-engine/Types.h"
#include "html-engine/internal/Node.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace HtmlEngine::Internal {

class NodeStore {
public:
    Node& operator[](NodeId id) { return blocks_[id >> kBlockBits][id & kBlockMask]; }
    const Node& operator[](NodeId id) const { return blocks_[id >> kBlockBits][id & kBlockMask]; }

    // A new node without relations. Fails with std::length_error after 2^32 - 1 nodes.
    NodeId Create(NodeKind kind);

    // Destroys a node; its relations must have been removed.
    void Destroy(NodeId id);

    ElementHandle HandleOf(NodeId id) const
    {
        return id == kNoNode ? kNoElement : (ElementHandle{(*this)[id].generation} << 32) | id;
    }

    // The living element that a handle names, or kNoNode.
    NodeId Resolve(ElementHandle handle) const;

    // The living node of any kind that a handle names, or kNoNode.
    NodeId ResolveNode(NodeHandle handle) const
    {
        const auto id = static_cast<NodeId>(handle & 0xFFFFFFFFU);
        if (id == kNoNode || id >= unused_) {
            return kNoNode;
        }
        const Node& node = (*this)[id];
        const bool isNamed = node.generation == static_cast<std::uint32_t>(handle >> 32);
        return isNamed && node.kind != NodeKind::None ? id : kNoNode;
    }

    std::size_t LiveCount() const { return live_; }

private:
    // Keeps handles within the 53 bits that a browser's numbers hold exactly.
    static constexpr std::uint32_t kMostGenerations = std::uint32_t{1} << 21;
    static constexpr unsigned kBlockBits = 10;
    static constexpr NodeId kBlockMask = (1U << kBlockBits) - 1;

    std::vector<std::unique_ptr<Node[]>> blocks_;
    NodeId firstFree_ = kNoNode;
    // First place that was never used; place 0 stays empty.
    NodeId unused_ = 1;
    std::size_t live_ = 0;
};

}  // namespace HtmlEngine::Internal
