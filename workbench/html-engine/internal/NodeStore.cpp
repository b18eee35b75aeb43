#include "html-engine/internal/NodeStore.h"

#include <limits>
#include <stdexcept>

namespace HtmlEngine::Internal {

NodeId NodeStore::Create(NodeKind kind)
{
    NodeId id = firstFree_;
    if (id != kNoNode) {
        firstFree_ = (*this)[id].next;
    } else {
        if (unused_ == std::numeric_limits<NodeId>::max()) {
            throw std::length_error("HtmlEngine: too many nodes in one document");
        }
        if ((unused_ >> kBlockBits) >= blocks_.size()) {
            blocks_.push_back(std::make_unique<Node[]>(std::size_t{1} << kBlockBits));
        }
        id = unused_++;
    }
    (*this)[id].Begin(kind);
    ++live_;
    return id;
}

void NodeStore::Destroy(NodeId id)
{
    Node& node = (*this)[id];
    node.End();
    --live_;
    // A place whose generations are used up is given up rather than letting a handle come back.
    if (++node.generation == kMostGenerations) {
        return;
    }
    node.next = firstFree_;
    firstFree_ = id;
}

NodeId NodeStore::Resolve(ElementHandle handle) const
{
    const NodeId id = ResolveNode(handle);
    return id != kNoNode && (*this)[id].IsElement() ? id : kNoNode;
}

}  // namespace HtmlEngine::Internal
