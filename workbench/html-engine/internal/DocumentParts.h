// What a Document consists of, shared by its source files.
#pragma once

#include "html-engine/Document.h"
#include "html-engine/internal/Tree.h"

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

namespace HtmlEngine {

class Document::Parts {
public:
    using NodeId = Internal::NodeId;

    Internal::Tree tree;
    std::uint64_t changeCount = 0;
    // Set while the document is being destroyed: nothing can be named any more.
    bool isClosing = false;
    std::unordered_map<NodeId, std::vector<std::shared_ptr<AttachedHandler>>> handlers;

    Internal::Node& At(NodeId id) { return tree.Nodes()[id]; }

    NodeId Resolve(ElementHandle handle) const
    {
        return isClosing ? Internal::kNoNode : tree.Nodes().Resolve(handle);
    }

    NodeId ResolveNode(NodeHandle handle) const
    {
        return isClosing ? Internal::kNoNode : tree.Nodes().ResolveNode(handle);
    }

    ElementHandle HandleOf(NodeId id) const { return tree.Nodes().HandleOf(id); }

    // Takes a run out of the tree; the handlers that this detaches are added to `ended`, to be
    // notified with NotifyDetached once the operation is complete.
    void Remove(Internal::NodeRun run, std::vector<HandlerOnPath>& ended);

    static void NotifyDetached(const std::vector<HandlerOnPath>& ended);

    // The nearest ancestor with handlers, kNoNode when there is none.
    NodeId HandlerElementAbove(NodeId id) const;

    // Takes the state `current` from the element that gives it up when `element` gets it.
    void TakeCurrentFor(NodeId element);

    // A copy of the attributes with references of its own, to be changed and given to
    // Tree::SetAttributes.
    std::vector<Internal::AttributeEntry> CopyAttributes(NodeId element);
};

}  // namespace HtmlEngine
