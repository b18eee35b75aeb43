// The entries of an ElementIndex by their keys. Addresses of entries stay right until they are
// erased. UI thread.
//
// Most keys of a long list are attribute values that occur once, under one attribute or two (a name
// and a reference to it). Their entries lie by the number of the value, which grows with the list:
// entering them touches memory in order and allocates nothing for each.
#pragma once

#include "html-engine/internal/AtomTable.h"
#include "html-engine/internal/OrderedNodeList.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <unordered_map>

namespace HtmlEngine::Internal {

// What an entry of the index is for.
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

constexpr IndexKey MakeIndexKey(IndexKind kind, Atom first, Atom second = kNoAtom)
{
    return (static_cast<IndexKey>(kind) << 60) | (IndexKey{first} << 30) | second;
}

// The elements of one key. One alone needs no list.
struct IndexEntry {
    NodeId only = kNoNode;
    // The removal that cleared this entry's range last.
    std::uint32_t removal = 0;
    std::unique_ptr<OrderedNodeList> many;

    std::size_t Size() const
    {
        return many != nullptr ? many->Size() : std::size_t{only != kNoNode};
    }
};

class IndexEntries {
public:
    // Null when there is none.
    const IndexEntry* Find(IndexKey key) const;
    IndexEntry* Find(IndexKey key)
    {
        return const_cast<IndexEntry*>(static_cast<const IndexEntries&>(*this).Find(key));
    }

    // The entry of a key, made if need be.
    IndexEntry& At(IndexKey key);

    // Ends the entry of a key, which exists.
    void Erase(IndexKey key);

    void Clear();

private:
    static constexpr std::size_t kNoPlace = ~std::size_t{0};

    // The entries of one value under different attributes.
    struct ValuePlaces {
        static constexpr std::size_t kCount = 2;

        std::array<Atom, kCount> attributes = {};
        // Whether there may be more of them among the others.
        bool hasMore = false;
        std::array<IndexEntry, kCount> entries;

        std::size_t PlaceOf(Atom attribute) const;
    };

    struct KeyHash {
        std::size_t operator()(IndexKey key) const
        {
            key ^= key >> 31;
            key *= 0x9E3779B97F4A7C15ULL;
            return static_cast<std::size_t>(key ^ (key >> 29));
        }
    };

    const ValuePlaces* PlacesOf(IndexKey key) const;

    std::deque<ValuePlaces> values_;
    std::unordered_map<IndexKey, IndexEntry, KeyHash> others_;
};

}  // namespace HtmlEngine::Internal
