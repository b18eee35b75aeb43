#pragma once

// Finds attached elements by what selectors ask for: name, presence and value of attributes
// (classes are values of "class"), state bits, and, for attributes and classes, those that are the
// first or the last element child of their parent. Every entry is in document order.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <unordered_map>

#include <html-engine/internal/DocumentOrder.h>
#include <html-engine/internal/OrderedNodeList.h>

namespace HtmlEngine::Internal {

/// What an entry of the index is for.
enum class IndexKind : std::uint8_t {
    TagName,
    Attribute,
    AttributeValue,
    State,
    FirstChildWithAttribute,
    LastChildWithAttribute,
    FirstChildWithClass,
    LastChildWithClass,
};

using IndexKey = std::uint64_t;

constexpr IndexKey MakeIndexKey(IndexKind kind, Atom first, Atom second = kNoAtom) {
    return (static_cast<IndexKey>(kind) << 60) | (IndexKey{first} << 30) | second;
}

/// The elements of one key. One alone needs no list: most keys of a long list are values that occur
/// once.
struct IndexEntry {
    NodeId only = kNoNode;
    /// The removal that cleared this entry's range last.
    std::uint32_t removal = 0;
    std::unique_ptr<OrderedNodeList> many;

    std::size_t Size() const { return many != nullptr ? many->Size() : std::size_t{only != kNoNode}; }
};

class ElementIndex {
public:
    /// `classAtom` and `styleAtom` name the attributes with those meanings. Values of `style` are
    /// not indexed.
    ElementIndex(NodeStore& nodes, const DocumentOrder& order, Atom classAtom, Atom styleAtom)
        : nodes_(nodes), order_(order), classAtom_(classAtom), styleAtom_(styleAtom) {}

    /// The elements of a key, or null when there are none.
    const IndexEntry* Find(IndexKey key) const;

    /// Enters elements that are linked, labelled and complete; each must not be here yet.
    void Add(std::span<const NodeId> elements);
    void Add(NodeId element) { Add(std::span<const NodeId>(&element, 1)); }

    /// Takes one element out, with the attributes, states and siblings that it had when it came in.
    void Remove(NodeId element);

    /// Takes whole subtrees out: `elements` are all the elements with labels in [low, high).
    void RemoveRange(std::span<const NodeId> elements, OrderLabel low, OrderLabel high);

    void AddState(NodeId element, std::uint32_t bits);
    void RemoveState(NodeId element, std::uint32_t bits);

    /// The element became the first or last child, or is none any more, after it came in.
    void AddEdge(NodeId element, bool first);
    void RemoveEdge(NodeId element, bool first);

    void Clear() { entries_.clear(); }

private:
    struct KeyHash {
        std::size_t operator()(IndexKey key) const {
            key ^= key >> 31;
            key *= 0x9E3779B97F4A7C15ULL;
            return static_cast<std::size_t>(key ^ (key >> 29));
        }
    };

    template <typename Function>
    void ForEachKey(NodeId element, Function&& function) const;
    template <typename Function>
    void ForEachEdgeKey(NodeId element, bool first, Function&& function) const;
    template <typename Function>
    static void ForEachStateKey(std::uint32_t bits, Function&& function);

    void Insert(IndexKey key, NodeId element);
    void Erase(IndexKey key, NodeId element);

    NodeStore& nodes_;
    const DocumentOrder& order_;
    Atom classAtom_;
    Atom styleAtom_;
    std::unordered_map<IndexKey, IndexEntry, KeyHash> entries_;
    std::uint32_t removal_ = 0;
};

}  // namespace HtmlEngine::Internal
