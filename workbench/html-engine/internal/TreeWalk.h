// Steps from node to node. All are loops over links; none recurses. kNoNode in gives kNoNode out
// where a step is asked of nothing.
#pragma once

#include "html-engine/internal/NodeStore.h"

namespace HtmlEngine::Internal {

// `id` itself if it is an element or none, else the nearest element among its later siblings.
inline NodeId ElementFrom(const NodeStore& nodes, NodeId id)
{
    while (id != kNoNode && !nodes[id].IsElement()) {
        id = nodes[id].next;
    }
    return id;
}

// `id` itself if it is an element or none, else the nearest element among its earlier siblings.
inline NodeId ElementBackFrom(const NodeStore& nodes, NodeId id)
{
    while (id != kNoNode && !nodes[id].IsElement()) {
        id = nodes[id].previous;
    }
    return id;
}

inline NodeId NextElementSibling(const NodeStore& nodes, NodeId id)
{
    return ElementFrom(nodes, nodes[id].next);
}

inline NodeId PreviousElementSibling(const NodeStore& nodes, NodeId id)
{
    return ElementBackFrom(nodes, nodes[id].previous);
}

inline NodeId FirstElementChild(const NodeStore& nodes, NodeId id)
{
    return nodes[id].element.elementCount == 0 ? kNoNode
                                               : ElementFrom(nodes, nodes[id].element.firstChild);
}

inline NodeId LastElementChild(const NodeStore& nodes, NodeId id)
{
    return nodes[id].element.elementCount == 0
               ? kNoNode
               : ElementBackFrom(nodes, nodes[id].element.lastChild);
}

// The first element in document order that comes after everything inside `id`.
inline NodeId ElementAfterSubtree(const NodeStore& nodes, NodeId id)
{
    for (; id != kNoNode; id = nodes[id].parent) {
        if (const NodeId sibling = NextElementSibling(nodes, id); sibling != kNoNode) {
            return sibling;
        }
    }
    return kNoNode;
}

// The last element in document order of the subtree, which may be `id` itself.
inline NodeId LastElementInSubtree(const NodeStore& nodes, NodeId id)
{
    for (NodeId child = LastElementChild(nodes, id); child != kNoNode;
         child = LastElementChild(nodes, id)) {
        id = child;
    }
    return id;
}

// The next element in document order.
inline NodeId NextElement(const NodeStore& nodes, NodeId id)
{
    const NodeId child = FirstElementChild(nodes, id);
    return child != kNoNode ? child : ElementAfterSubtree(nodes, id);
}

// The element before in document order.
inline NodeId PreviousElement(const NodeStore& nodes, NodeId id)
{
    const NodeId sibling = PreviousElementSibling(nodes, id);
    return sibling != kNoNode ? LastElementInSubtree(nodes, sibling) : nodes[id].parent;
}

// The next element in document order inside `top`, kNoNode at its end.
inline NodeId NextElementWithin(const NodeStore& nodes, NodeId id, NodeId top)
{
    if (const NodeId child = FirstElementChild(nodes, id); child != kNoNode) {
        return child;
    }
    for (; id != top; id = nodes[id].parent) {
        if (const NodeId sibling = NextElementSibling(nodes, id); sibling != kNoNode) {
            return sibling;
        }
    }
    return kNoNode;
}

// Visits every node of the subtree of `top`, `enter(id)` on the way in and, for elements,
// `leave(id)` on the way out, `top` included.
template <typename Enter, typename Leave>
void VisitSubtree(const NodeStore& nodes, NodeId top, Enter&& enter, Leave&& leave)
{
    NodeId id = top;
    while (true) {
        enter(id);
        if (nodes[id].IsElement()) {
            if (nodes[id].element.firstChild != kNoNode) {
                id = nodes[id].element.firstChild;
                continue;
            }
            leave(id);
        }
        while (id != top && nodes[id].next == kNoNode) {
            id = nodes[id].parent;
            leave(id);
        }
        if (id == top) {
            return;
        }
        id = nodes[id].next;
    }
}

}  // namespace HtmlEngine::Internal
