// Finds attached elements by what selectors ask for: name, presence and value of attributes
// (classes are values of "class"), state bits, and, for attributes and classes, those that are the
// first or the last element child of their parent. Every entry is in document order.
#pragma once

#include "html-engine/internal/DocumentOrder.h"
#include "html-engine/internal/IndexEntries.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace HtmlEngine::Internal {

class ElementIndex {
public:
    // `classAtom` and `styleAtom` name the attributes with those meanings. Values of `style` are
    // not indexed.
    ElementIndex(NodeStore& nodes, const DocumentOrder& order, Atom classAtom, Atom styleAtom)
        : nodes_(nodes), order_(order), classAtom_(classAtom), styleAtom_(styleAtom)
    {
    }

    // The elements of a key, or null when there are none.
    const IndexEntry* Find(IndexKey key) const { return entries_.Find(key); }

    // What was made of the keys that were met last. A list has the same few keys over and over.
    template <typename Value>
    class RecentKeys {
    public:
        // What the caller put there for this key, or an empty value.
        Value& At(IndexKey key)
        {
            Place& place = places_[(key * 0x9E3779B97F4A7C15ULL) >> (64 - kBits)];
            if (place.key != key) {
                place = {key, Value()};
            }
            return place.value;
        }

    private:
        static constexpr unsigned kBits = 8;

        struct Place {
            IndexKey key = 0;
            Value value = Value();
        };

        std::array<Place, std::size_t{1} << kBits> places_;
    };

    // Valid until something is taken out of the index.
    using RecentEntries = RecentKeys<IndexEntry*>;

    // Enters an element that is linked, labelled and complete; it must not be here yet. For many
    // elements in document order, `recent` is the same object.
    void Add(NodeId element, RecentEntries& recent);
    void Add(NodeId element);

    // Takes one element out, with the attributes, states and siblings that it had when it came in.
    void Remove(NodeId element);

    // Takes whole subtrees out: `elements` are all the elements with labels in [low, high).
    void RemoveRange(std::span<const NodeId> elements, OrderLabel low, OrderLabel high);

    void AddState(NodeId element, std::uint32_t bits);
    void RemoveState(NodeId element, std::uint32_t bits);

    // The element became the first or last child, or is none any more, after it came in.
    void AddEdge(NodeId element, bool first);
    void RemoveEdge(NodeId element, bool first);

    void Clear() { entries_.Clear(); }

private:
    template <typename Function>
    void ForEachKey(NodeId element, Function&& function) const;
    template <typename Function>
    void ForEachEdgeKey(NodeId element, bool first, Function&& function) const;
    template <typename Function>
    static void ForEachStateKey(std::uint32_t bits, Function&& function);

    void Insert(IndexEntry& entry, NodeId element);
    void Erase(IndexKey key, NodeId element);
    void EraseRange(IndexKey key, OrderLabel low, OrderLabel high);

    NodeStore& nodes_;
    const DocumentOrder& order_;
    Atom classAtom_;
    Atom styleAtom_;
    IndexEntries entries_;
    std::uint32_t removal_ = 0;
};

}  // namespace HtmlEngine::Internal
