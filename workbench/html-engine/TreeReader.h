// Reads a Document node by node, text and comments included, to make a copy of the tree elsewhere.
// Each step takes constant time and allocates nothing. UI thread; made on the spot, usable as long
// as its document. Views stay valid until the document changes.
//
// Handles of detached elements, and of what is inside them, can be read too. Unknown handles yield
// None, kNoNodeHandle, 0 or the empty text, and so does a question that the kind of node has no
// answer to.
#pragma once

#include "html-engine/Document.h"
#include "html-engine/Types.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace HtmlEngine {

namespace Internal {
struct Node;
}

class TreeReader {
public:
    struct Attribute {
        std::string_view name;
        std::string_view value;
    };

    explicit TreeReader(const Document& document);

    NodeKind Kind(NodeHandle node) const;

    NodeHandle Parent(NodeHandle node) const;
    NodeHandle FirstChild(NodeHandle node) const;
    NodeHandle LastChild(NodeHandle node) const;
    NodeHandle NextSibling(NodeHandle node) const;
    NodeHandle PreviousSibling(NodeHandle node) const;

    // The characters of a text or comment.
    std::string_view Text(NodeHandle node) const;

    // Name of an element, as Document::TagName gives it.
    std::string_view TagName(NodeHandle node) const;

    // Html for everything that is not from elsewhere.
    Namespace NamespaceOf(NodeHandle node) const;

    // Entries of an element in serialisation order. Each class is an entry of its own, named
    // `class`; these come first.
    std::size_t AttributeCount(NodeHandle node) const;
    Attribute AttributeAt(NodeHandle node, std::size_t index) const;

    // The state bits of an element.
    std::uint32_t State(NodeHandle node) const;

private:
    const Internal::Node* Find(NodeHandle node) const;
    const Internal::Node* FindElement(NodeHandle node) const;

    const Document::Parts& parts_;
};

}  // namespace HtmlEngine
