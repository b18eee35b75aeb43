#include "html-engine/internal/ElementIndex.h"

#include "html-engine/internal/TreeWalk.h"

#include <bit>

namespace HtmlEngine::Internal {

template <typename Function>
void ElementIndex::ForEachStateKey(std::uint32_t bits, Function&& function)
{
    for (; bits != 0; bits &= bits - 1) {
        function(MakeIndexKey(IndexKind::State, static_cast<Atom>(std::countr_zero(bits))));
    }
}

template <typename Function>
void ElementIndex::ForEachEdgeKey(NodeId element, bool first, Function&& function) const
{
    const IndexKind attribute =
        first ? IndexKind::FirstChildWithAttribute : IndexKind::LastChildWithAttribute;
    const IndexKind classKind =
        first ? IndexKind::FirstChildWithClass : IndexKind::LastChildWithClass;
    for (const AttributeEntry& entry : nodes_[element].element.attributes.Entries()) {
        if (entry.name == classAtom_) {
            function(MakeIndexKey(classKind, entry.value));
        } else {
            function(MakeIndexKey(attribute, entry.name));
        }
    }
}

template <typename Function>
void ElementIndex::ForEachKey(NodeId element, Function&& function) const
{
    const Node& node = nodes_[element];
    function(MakeIndexKey(IndexKind::TagName, node.name));
    bool hasClass = false;
    for (const AttributeEntry& entry : node.element.attributes.Entries()) {
        const bool isClass = entry.name == classAtom_;
        if (!isClass || !hasClass) {
            function(MakeIndexKey(IndexKind::Attribute, entry.name));
            hasClass = hasClass || isClass;
        }
        if (entry.name != styleAtom_) {
            function(MakeIndexKey(IndexKind::AttributeValue, entry.name, entry.value));
        }
    }
    ForEachStateKey(node.element.states, function);
    if (!node.element.attributes.Entries().empty()) {
        if (PreviousElementSibling(nodes_, element) == kNoNode) {
            ForEachEdgeKey(element, true, function);
        }
        if (NextElementSibling(nodes_, element) == kNoNode) {
            ForEachEdgeKey(element, false, function);
        }
    }
}

void ElementIndex::Insert(IndexEntry& entry, NodeId element)
{
    if (entry.many == nullptr) {
        if (entry.only == kNoNode) {
            entry.only = element;
            return;
        }
        entry.many = std::make_unique<OrderedNodeList>();
        entry.many->Insert(entry.only, order_);
        entry.only = kNoNode;
    }
    entry.many->Insert(element, order_);
}

void ElementIndex::Erase(IndexKey key, NodeId element)
{
    IndexEntry* const entry = entries_.Find(key);
    if (entry == nullptr) {
        return;
    }
    if (entry->many != nullptr) {
        entry->many->Erase(element, order_);
    } else if (entry->only == element) {
        entry->only = kNoNode;
    }
    if (entry->Size() == 0) {
        entries_.Erase(key);
    }
}

void ElementIndex::Add(NodeId element, RecentEntries& recent)
{
    ForEachKey(element, [&](IndexKey key) {
        IndexEntry*& entry = recent.At(key);
        if (entry == nullptr) {
            entry = &entries_.At(key);
        }
        Insert(*entry, element);
    });
}

void ElementIndex::Add(NodeId element)
{
    ForEachKey(element, [&](IndexKey key) { Insert(entries_.At(key), element); });
}

void ElementIndex::Remove(NodeId element)
{
    ForEachKey(element, [&](IndexKey key) { Erase(key, element); });
}

void ElementIndex::RemoveRange(std::span<const NodeId> elements, OrderLabel low, OrderLabel high)
{
    ++removal_;
    RecentKeys<bool> recent;
    for (const NodeId element : elements) {
        ForEachKey(element, [&](IndexKey key) {
            bool& isDone = recent.At(key);
            if (!isDone) {
                isDone = true;
                EraseRange(key, low, high);
            }
        });
    }
}

void ElementIndex::EraseRange(IndexKey key, OrderLabel low, OrderLabel high)
{
    IndexEntry* const entry = entries_.Find(key);
    if (entry == nullptr || entry->removal == removal_) {
        return;
    }
    entry->removal = removal_;
    if (entry->many != nullptr) {
        entry->many->EraseRange(low, high, order_);
    } else if (order_.Of(entry->only) >= low && order_.Of(entry->only) < high) {
        entry->only = kNoNode;
    }
    if (entry->Size() == 0) {
        entries_.Erase(key);
    }
}

void ElementIndex::AddState(NodeId element, std::uint32_t bits)
{
    ForEachStateKey(bits, [&](IndexKey key) { Insert(entries_.At(key), element); });
}

void ElementIndex::RemoveState(NodeId element, std::uint32_t bits)
{
    ForEachStateKey(bits, [&](IndexKey key) { Erase(key, element); });
}

void ElementIndex::AddEdge(NodeId element, bool first)
{
    ForEachEdgeKey(element, first, [&](IndexKey key) { Insert(entries_.At(key), element); });
}

void ElementIndex::RemoveEdge(NodeId element, bool first)
{
    ForEachEdgeKey(element, first, [&](IndexKey key) { Erase(key, element); });
}

}  // namespace HtmlEngine::Internal
