// Notifications of changes to a Document's tree, for keeping a copy of it: the copy is made once by
// walking the tree (see TreeReader), and is then updated by the calls below. UI thread.
//
// Only nodes in the tree are reported. Each call comes right after its change and before the next
// one: at that moment the tree is exactly the one that all calls so far describe, and may be read.
// One operation may cause several calls. Descendants of a node that is inserted or removed are not
// reported separately; the destruction of the document is not reported.
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

    // The siblings from `first` to `last` are no more under `parent`, where they stood behind
    // `previous`, or in front of everything where that is kNoNodeHandle. They are still known
    // during the call, without a parent, and linked to each other and to what is inside them as
    // before.
    virtual void OnRemoved(NodeHandle parent, NodeHandle previous, NodeHandle first,
                           NodeHandle last) noexcept = 0;

    // A text node has another text: it took in the text of a neighbour, of markup that was put
    // beside it, or that of a node whose removal is reported next.
    virtual void OnTextChanged(NodeHandle text) noexcept = 0;

    // Attributes, classes or inline style of an element have changed.
    virtual void OnAttributesChanged(NodeHandle element) noexcept = 0;

    // State bits of an element have changed.
    virtual void OnStatesChanged(NodeHandle element) noexcept = 0;

    // The tree has a new root; all nodes reported so far are gone.
    virtual void OnPageReplaced() noexcept = 0;
};

}  // namespace HtmlEngine
