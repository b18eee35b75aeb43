// What a Document tells of the changes to its page, so that somebody can keep a copy of the tree:
// the copy is made once by walking it (see TreeReader), and then follows what is told here. UI
// thread.
//
// Only nodes in the page's tree are spoken of. Each call comes when its change has been made, and
// before the next one is: at that moment the tree is exactly the one that all calls so far
// describe, and may be read. One operation may cause several calls. What is inside a node that is
// inserted or removed is not told of by itself; nor is anything told when the document is
// destroyed.
#pragma once

#include "html-engine/Types.h"

namespace HtmlEngine {

// The calls must not change the document or its observer, and must not throw. [ui-thread]
class TreeObserver {
public:
    TreeObserver() = default;
    TreeObserver(const TreeObserver&) = delete;
    TreeObserver& operator=(const TreeObserver&) = delete;
    virtual ~TreeObserver() = default;

    // The siblings from `first` to `last` stand under `parent`, behind `previous`, or in front of
    // everything where that is kNoNodeHandle. None of them was ever in the tree before.
    virtual void OnInserted(NodeHandle parent, NodeHandle previous, NodeHandle first,
                            NodeHandle last) noexcept = 0;

    // The siblings from `first` to `last` are no more under `parent`. They are still known during
    // the call, without a parent, and linked to each other and to what is inside them as before.
    virtual void OnRemoved(NodeHandle parent, NodeHandle first, NodeHandle last) noexcept = 0;

    // A text node has another text: it took in the text of a neighbour, of markup that was put
    // beside it, or that of a node that is told as removed next.
    virtual void OnTextChanged(NodeHandle text) noexcept = 0;

    // Attributes, classes or inline style of an element are others.
    virtual void OnAttributesChanged(NodeHandle element) noexcept = 0;

    // State bits of an element are others.
    virtual void OnStatesChanged(NodeHandle element) noexcept = 0;

    // Everything is another: the page has a new root, and all nodes told of so far are gone.
    virtual void OnPageReplaced() noexcept = 0;
};

}  // namespace HtmlEngine
