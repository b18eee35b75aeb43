// The nodes of a document and their relations, together with everything that is derived from them:
// order labels, index, child positions. Every change of the structure goes through Link and Remove,
// which keep the derived parts true. Operations take node numbers that are known to be right; the
// checks of handles and arguments are Document's. UI thread.
#pragma once

#include "html-engine/TreeObserver.h"
#include "html-engine/internal/AtomTable.h"
#include "html-engine/internal/ChildPositions.h"
#include "html-engine/internal/DocumentOrder.h"
#include "html-engine/internal/ElementIndex.h"
#include "html-engine/internal/KnownNames.h"
#include "html-engine/internal/NodeStore.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace HtmlEngine::Internal {

// Consecutive siblings; empty when `first` is kNoNode.
struct NodeRun {
    NodeId first = kNoNode;
    NodeId last = kNoNode;

    bool IsEmpty() const { return first == kNoNode; }
};

// An element that left the tree and had handlers.
struct LeftElement {
    NodeId id = kNoNode;
    ElementHandle handle = kNoElement;
};

class Tree {
public:
    Tree() = default;
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;

    NodeStore& Nodes() { return nodes_; }
    const NodeStore& Nodes() const { return nodes_; }
    AtomTable& Atoms() { return atoms_; }
    const AtomTable& Atoms() const { return atoms_; }
    const KnownNames& Names() const { return names_; }
    const DocumentOrder& Order() const { return order_; }
    const ElementIndex& Index() const { return index_; }
    ChildPositions& Positions() const { return positions_; }

    NodeId Root() const { return root_; }
    std::size_t AttachedCount() const { return attachedCount_; }

    // What is known of an element by its name; none for one from SVG or MathML.
    ElementTraits TraitsOf(NodeId element) const
    {
        const Node& node = nodes_[element];
        return node.Is(NodeFlag::kForeign) ? ElementTraits{} : names_.TraitsOf(node.name);
    }

    bool IsVoid(NodeId element) const { return (TraitsOf(element) & ElementTrait::kVoid) != 0; }

    // Borrowed; null for none.
    void SetObserver(TreeObserver* observer) { observer_ = observer; }

    // ---- Making nodes: they belong to no tree until they are linked. ----

    NodeId CreateElement(std::string_view lowerCaseName, std::uint8_t flags = 0);

    // Another element with the same name, attributes and states, and without content.
    NodeId CreateElementLike(NodeId element, std::uint8_t flags);

    NodeId CreateCharacters(NodeKind kind, std::string_view text);

    // Puts a node behind the run, under `parent` where there is one; both are in no tree yet. Text
    // behind text becomes one node.
    void Append(NodeId parent, NodeRun& run, NodeId node);

    // Ends a run that was never linked, or was unlinked, with all that is inside; elements in use
    // stay, each as the root of a tree of its own.
    void Dispose(NodeRun run);

    // ---- Changing the structure ----

    // Makes an unlinked element the page's root, which makes a new page; there must be none.
    void SetRoot(NodeId root);

    // Puts an unlinked run under `parent`, behind `previous` (kNoNode: first). Text that comes to
    // lie beside text is joined: the node that is in its place already takes the text in.
    // `elements` are all elements of the run in document order; empty when the caller has no list.
    void Link(NodeId parent, NodeId previous, NodeRun run, std::span<const NodeId> elements = {});

    // Takes siblings out and disposes of them. The elements among them that had handlers are
    // added to `left` in document order. Text that comes to lie beside text is joined.
    void Remove(NodeRun run, std::vector<LeftElement>& left);

    // Everything inside an element, as a run.
    NodeRun ContentOf(NodeId element) const
    {
        return {nodes_[element].element.firstChild, nodes_[element].element.lastChild};
    }

    // ---- Changing elements ----

    // Replaces the attributes; adopts the references of `entries` and gives the old ones back.
    void SetAttributes(NodeId element, std::span<const AttributeEntry> entries);

    void SetStates(NodeId element, std::uint32_t states);

private:
    std::vector<NodeId> ElementsOf(NodeRun run) const;
    void Attach(std::span<const NodeId> elements);
    void Detach(NodeRun run, std::vector<LeftElement>& left);
    void Unlink(NodeRun run);
    std::size_t CountElements(NodeRun run) const;
    // Gives `into` the text of both, which lie in this order.
    void JoinText(NodeId first, NodeId second, NodeId into);
    // Joins text at the ends of an unlinked run with its future neighbours; the remaining run.
    NodeRun JoinNeighbours(NodeId previous, NodeRun run, NodeId next);
    void ReportRemoved(NodeId parent, NodeId previous, NodeRun run);
    void ReportTextChanged(NodeId text);
    void DestroyNode(NodeId id);

    NodeStore nodes_;
    AtomTable atoms_;
    KnownNames names_{atoms_};
    DocumentOrder order_{nodes_};
    ElementIndex index_{nodes_, order_, names_.classAttribute, names_.styleAttribute};
    mutable ChildPositions positions_{nodes_};
    NodeId root_ = kNoNode;
    std::size_t attachedCount_ = 0;
    TreeObserver* observer_ = nullptr;
};

}  // namespace HtmlEngine::Internal
