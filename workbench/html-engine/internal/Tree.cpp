#include "html-engine/internal/Tree.h"

#include "html-engine/internal/TreeWalk.h"

#include <string>

namespace HtmlEngine::Internal {

namespace {

// Calls `function` for each sibling of a run, which may unlink it.
template <typename Function>
void ForEachSibling(const NodeStore& nodes, NodeRun run, Function&& function)
{
    for (NodeId id = run.first; id != kNoNode;) {
        const NodeId next = id == run.last ? kNoNode : nodes[id].next;
        function(id);
        id = next;
    }
}

}  // namespace

NodeId Tree::CreateElement(std::string_view lowerCaseName, std::uint8_t flags)
{
    const NodeId id = nodes_.Create(NodeKind::Element);
    nodes_[id].name = atoms_.Acquire(lowerCaseName);
    nodes_[id].flags = flags;
    return id;
}

NodeId Tree::CreateElementLike(NodeId element, std::uint8_t flags)
{
    const NodeId id = nodes_.Create(NodeKind::Element);
    const Node& model = nodes_[element];
    Node& node = nodes_[id];
    node.name = model.name;
    node.flags = flags;
    atoms_.AddReference(node.name);
    node.element.states = model.element.states;
    node.element.attributes.Share(model.element.attributes);
    return id;
}

NodeId Tree::CreateCharacters(NodeKind kind, std::string_view text)
{
    const NodeId id = nodes_.Create(kind);
    nodes_[id].text.Assign(text);
    return id;
}

void Tree::Append(NodeId parent, NodeRun& run, NodeId node)
{
    if (!run.IsEmpty() && nodes_[run.last].IsText() && nodes_[node].IsText()) {
        JoinText(run.last, node, run.last);
        DestroyNode(node);
        return;
    }
    nodes_[node].parent = parent;
    nodes_[node].previous = run.last;
    if (run.IsEmpty()) {
        run.first = node;
    } else {
        nodes_[run.last].next = node;
    }
    run.last = node;
    if (parent != kNoNode) {
        ElementPart& owner = nodes_[parent].element;
        owner.firstChild = run.first;
        owner.lastChild = node;
        owner.elementCount += nodes_[node].IsElement() ? 1U : 0U;
    }
}

void Tree::JoinText(NodeId first, NodeId second, NodeId into)
{
    std::string joined(nodes_[first].text.View());
    joined += nodes_[second].text.View();
    nodes_[into].text.Assign(joined);
}

void Tree::DestroyNode(NodeId id)
{
    Node& node = nodes_[id];
    if (node.IsElement()) {
        SetAttributes(id, {});
        positions_.Forget(id);
    }
    if (node.name != kNoAtom) {
        atoms_.Release(node.name);
    }
    nodes_.Destroy(id);
}

void Tree::Dispose(NodeRun run)
{
    std::vector<NodeId> ending;
    std::vector<NodeId> staying;
    std::size_t depth = 0;
    for (NodeId id = run.first; id != kNoNode;) {
        const Node& node = nodes_[id];
        const bool stays = node.IsElement() && node.element.uses > 0;
        (stays ? staying : ending).push_back(id);
        if (node.IsElement() && !stays && node.element.firstChild != kNoNode) {
            id = node.element.firstChild;
            ++depth;
            continue;
        }
        while (depth > 0 && nodes_[id].next == kNoNode) {
            id = nodes_[id].parent;
            --depth;
        }
        id = depth == 0 && id == run.last ? kNoNode : nodes_[id].next;
    }
    for (const NodeId id : staying) {
        nodes_[id].parent = nodes_[id].previous = nodes_[id].next = kNoNode;
    }
    // The place that ends last is used first: what comes next lies in memory in document order.
    for (auto id = ending.rbegin(); id != ending.rend(); ++id) {
        DestroyNode(*id);
    }
}

void Tree::SetRoot(NodeId root)
{
    root_ = root;
    Attach(ElementsOf({root, root}));
    if (observer_ != nullptr) {
        observer_->OnPageReplaced();
    }
}

std::size_t Tree::CountElements(NodeRun run) const
{
    std::size_t count = 0;
    ForEachSibling(nodes_, run, [&](NodeId id) { count += nodes_[id].IsElement() ? 1U : 0U; });
    return count;
}

void Tree::Link(NodeId parent, NodeId previous, NodeRun run, std::span<const NodeId> elements)
{
    if (run.IsEmpty()) {
        return;
    }
    const NodeId next =
        previous == kNoNode ? nodes_[parent].element.firstChild : nodes_[previous].next;
    run = JoinNeighbours(previous, run, next);
    if (run.IsEmpty()) {
        return;
    }
    ElementPart& owner = nodes_[parent].element;
    const std::size_t elementCount = CountElements(run);

    ForEachSibling(nodes_, run, [&](NodeId id) { nodes_[id].parent = parent; });
    nodes_[run.first].previous = previous;
    nodes_[run.last].next = next;
    (previous == kNoNode ? owner.firstChild : nodes_[previous].next) = run.first;
    (next == kNoNode ? owner.lastChild : nodes_[next].previous) = run.last;
    owner.elementCount += static_cast<std::uint32_t>(elementCount);

    const bool isAttached = nodes_[parent].Is(NodeFlag::kAttached);
    if (elementCount > 0) {
        const NodeId firstElement = ElementFrom(nodes_, run.first);
        const NodeId lastElement = ElementBackFrom(nodes_, run.last);
        positions_.Inserted(parent, firstElement, elementCount);
        if (isAttached) {
            Attach(elements.empty() ? ElementsOf(run) : elements);
            const NodeId elementBefore = PreviousElementSibling(nodes_, firstElement);
            const NodeId elementAfter = NextElementSibling(nodes_, lastElement);
            if (elementBefore == kNoNode && elementAfter != kNoNode) {
                index_.RemoveEdge(elementAfter, true);
            }
            if (elementAfter == kNoNode && elementBefore != kNoNode) {
                index_.RemoveEdge(elementBefore, false);
            }
        }
    }
    if (observer_ != nullptr && isAttached) {
        observer_->OnInserted(nodes_.HandleOf(parent), nodes_.HandleOf(previous),
                              nodes_.HandleOf(run.first), nodes_.HandleOf(run.last));
    }
}

NodeRun Tree::JoinNeighbours(NodeId previous, NodeRun run, NodeId next)
{
    if (previous != kNoNode && nodes_[previous].IsText() && nodes_[run.first].IsText()) {
        const NodeId joined = run.first;
        JoinText(previous, joined, previous);
        ReportTextChanged(previous);
        run.first = nodes_[joined].next;
        DestroyNode(joined);
        if (run.IsEmpty()) {
            return {};
        }
        nodes_[run.first].previous = kNoNode;
    }
    if (next != kNoNode && nodes_[next].IsText() && nodes_[run.last].IsText()) {
        const NodeId joined = run.last;
        JoinText(joined, next, next);
        ReportTextChanged(next);
        run.last = nodes_[joined].previous;
        DestroyNode(joined);
        if (run.last == kNoNode) {
            return {};
        }
        nodes_[run.last].next = kNoNode;
    }
    return run;
}

void Tree::ReportTextChanged(NodeId text)
{
    if (observer_ != nullptr && nodes_[nodes_[text].parent].Is(NodeFlag::kAttached)) {
        observer_->OnTextChanged(nodes_.HandleOf(text));
    }
}

void Tree::ReportRemoved(NodeId parent, NodeId previous, NodeRun run)
{
    if (observer_ == nullptr || parent == kNoNode || !nodes_[parent].Is(NodeFlag::kAttached)) {
        return;
    }
    ForEachSibling(nodes_, run, [&](NodeId id) { nodes_[id].parent = kNoNode; });
    observer_->OnRemoved(nodes_.HandleOf(parent), nodes_.HandleOf(previous),
                         nodes_.HandleOf(run.first), nodes_.HandleOf(run.last));
}

std::vector<NodeId> Tree::ElementsOf(NodeRun run) const
{
    std::vector<NodeId> elements;
    ForEachSibling(nodes_, run, [&](NodeId top) {
        if (nodes_[top].IsElement()) {
            for (NodeId id = top; id != kNoNode; id = NextElementWithin(nodes_, id, top)) {
                elements.push_back(id);
            }
        }
    });
    return elements;
}

void Tree::Attach(std::span<const NodeId> elements)
{
    attachedCount_ += elements.size();
    ElementIndex::RecentEntries recent;
    order_.Label(elements, [&](NodeId id) {
        nodes_[id].flags |= NodeFlag::kAttached;
        index_.Add(id, recent);
    });
}

void Tree::Detach(NodeRun run, std::vector<LeftElement>& left)
{
    const std::vector<NodeId> elements = ElementsOf(run);
    if (elements.empty()) {
        return;
    }
    if (run.first == root_) {
        index_.Clear();
        root_ = kNoNode;
    } else {
        index_.RemoveRange(elements, order_.Of(elements.front()),
                           order_.EndOf(ElementBackFrom(nodes_, run.last)));
    }
    attachedCount_ -= elements.size();
    for (const NodeId id : elements) {
        Node& node = nodes_[id];
        if (node.Is(NodeFlag::kHasHandlers)) {
            left.push_back({id, nodes_.HandleOf(id)});
        }
        node.flags &= static_cast<std::uint8_t>(~(NodeFlag::kAttached | NodeFlag::kHasHandlers));
    }
}

void Tree::Unlink(NodeRun run)
{
    const NodeId parent = nodes_[run.first].parent;
    const NodeId previous = nodes_[run.first].previous;
    const NodeId next = nodes_[run.last].next;
    if (parent != kNoNode) {
        ElementPart& owner = nodes_[parent].element;
        (previous == kNoNode ? owner.firstChild : nodes_[previous].next) = next;
        (next == kNoNode ? owner.lastChild : nodes_[next].previous) = previous;
        owner.elementCount -= static_cast<std::uint32_t>(CountElements(run));
    }
    nodes_[run.first].previous = kNoNode;
    nodes_[run.last].next = kNoNode;
}

void Tree::Remove(NodeRun run, std::vector<LeftElement>& left)
{
    if (run.IsEmpty()) {
        return;
    }
    const NodeId parent = nodes_[run.first].parent;
    const NodeId previous = nodes_[run.first].previous;
    const NodeId next = nodes_[run.last].next;
    const std::size_t elementCount = CountElements(run);
    const bool wasAttached =
        parent == kNoNode ? run.first == root_ : nodes_[parent].Is(NodeFlag::kAttached);

    if (parent != kNoNode && elementCount > 0) {
        if (elementCount == nodes_[parent].element.elementCount) {
            positions_.Forget(parent);
        } else {
            positions_.Removing(parent, ElementFrom(nodes_, run.first), elementCount);
        }
    }
    if (wasAttached) {
        Detach(run, left);
    }
    Unlink(run);
    if (parent != kNoNode && wasAttached && elementCount > 0) {
        const NodeId elementBefore = ElementBackFrom(nodes_, previous);
        const NodeId elementAfter = ElementFrom(nodes_, next);
        if (elementBefore == kNoNode && elementAfter != kNoNode) {
            index_.AddEdge(elementAfter, true);
        }
        if (elementAfter == kNoNode && elementBefore != kNoNode) {
            index_.AddEdge(elementBefore, false);
        }
    }
    ReportRemoved(parent, previous, run);
    Dispose(run);
    if (previous != kNoNode && next != kNoNode && nodes_[previous].IsText() &&
        nodes_[next].IsText()) {
        JoinText(previous, next, previous);
        ReportTextChanged(previous);
        Unlink({next, next});
        ReportRemoved(parent, previous, {next, next});
        DestroyNode(next);
    }
}

void Tree::SetAttributes(NodeId element, std::span<const AttributeEntry> entries)
{
    AttributeList& list = nodes_[element].element.attributes;
    const bool attached = nodes_[element].Is(NodeFlag::kAttached);
    if (attached) {
        index_.Remove(element);
    }
    if (!list.IsShared()) {
        for (const AttributeEntry& entry : list.Entries()) {
            atoms_.Release(entry.name);
            atoms_.Release(entry.value);
        }
    }
    list.Assign(entries);
    if (attached) {
        index_.Add(element);
        if (observer_ != nullptr) {
            observer_->OnAttributesChanged(nodes_.HandleOf(element));
        }
    }
}

void Tree::SetStates(NodeId element, std::uint32_t states)
{
    Node& node = nodes_[element];
    const std::uint32_t added = states & ~node.element.states;
    const std::uint32_t removed = node.element.states & ~states;
    node.element.states = states;
    if (node.Is(NodeFlag::kAttached)) {
        index_.RemoveState(element, removed);
        index_.AddState(element, added);
        if (observer_ != nullptr && (added | removed) != 0) {
            observer_->OnStatesChanged(nodes_.HandleOf(element));
        }
    }
}

}  // namespace HtmlEngine::Internal
