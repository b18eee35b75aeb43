// One node of the tree, 64 bytes. Nodes refer to each other by number, not by pointer: half the
// size, and the number is the lower half of an element's handle.
#pragma once

#include "html-engine/Types.h"
#include "html-engine/internal/AtomTable.h"
#include "html-engine/internal/AttributeList.h"
#include "html-engine/internal/NodeText.h"

#include <cstdint>
#include <new>

namespace HtmlEngine::Internal {

// Number of a node in its NodeStore; 0 is no node.
using NodeId = std::uint32_t;

constexpr NodeId kNoNode = 0;

namespace NodeFlag {
// In the page's tree: labelled and indexed.
constexpr std::uint8_t kAttached = 1;
// Has an entry among the attached handlers.
constexpr std::uint8_t kHasHandlers = 2;
// From SVG or MathML: not void, whatever its name.
constexpr std::uint8_t kForeign = 4;
// Among the foreign ones: from MathML.
constexpr std::uint8_t kMathMl = 8;
}  // namespace NodeFlag

struct ElementPart {
    NodeId firstChild = kNoNode;
    NodeId lastChild = kNoNode;
    // Children that are elements.
    std::uint32_t elementCount = 0;
    std::uint32_t states = 0;
    std::uint32_t uses = 0;
    // Where ChildPositions last saw this element among its siblings.
    std::uint32_t positionHint = 0;
    // Grows in document order among attached elements.
    std::uint64_t label = 0;
    AttributeList attributes;
};

struct Node {
    NodeId parent = kNoNode;
    NodeId previous = kNoNode;
    // The next sibling; in a free node the next free one.
    NodeId next = kNoNode;
    // Counts the nodes that lived in this place; 0 is never used.
    std::uint32_t generation = 1;
    Atom name = kNoAtom;
    NodeKind kind = NodeKind::None;
    std::uint8_t flags = 0;

    union {
        ElementPart element;
        NodeText text;
    };

    Node() {}
    ~Node() { End(); }
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;

    void Begin(NodeKind newKind)
    {
        kind = newKind;
        flags = 0;
        parent = previous = next = kNoNode;
        name = kNoAtom;
        if (kind == NodeKind::Element) {
            ::new (static_cast<void*>(&element)) ElementPart();
        } else {
            ::new (static_cast<void*>(&text)) NodeText();
        }
    }

    void End()
    {
        if (kind == NodeKind::Element) {
            element.~ElementPart();
        } else if (kind != NodeKind::None) {
            text.~NodeText();
        }
        kind = NodeKind::None;
    }

    bool IsElement() const { return kind == NodeKind::Element; }
    bool IsText() const { return kind == NodeKind::Text; }
    bool Is(std::uint8_t flag) const { return (flags & flag) != 0; }
};

static_assert(sizeof(Node) == 64);

}  // namespace HtmlEngine::Internal
