#include "html-engine/internal/IndexEntries.h"

#include <algorithm>

namespace HtmlEngine::Internal {

namespace {

bool IsOfValue(IndexKey key)
{
    return (key >> 60) == static_cast<IndexKey>(IndexKind::AttributeValue);
}

Atom AttributeOf(IndexKey key)
{
    return static_cast<Atom>((key >> 30) & kMaxAtom);
}

Atom ValueOf(IndexKey key)
{
    return static_cast<Atom>(key & kMaxAtom);
}

}  // namespace

std::size_t IndexEntries::ValuePlaces::PlaceOf(Atom attribute) const
{
    const auto found = std::ranges::find(attributes, attribute);
    return found == attributes.end() ? kNoPlace
                                     : static_cast<std::size_t>(found - attributes.begin());
}

const IndexEntries::ValuePlaces* IndexEntries::PlacesOf(IndexKey key) const
{
    return IsOfValue(key) && ValueOf(key) < values_.size() ? &values_[ValueOf(key)] : nullptr;
}

const IndexEntry* IndexEntries::Find(IndexKey key) const
{
    if (IsOfValue(key)) {
        const ValuePlaces* const places = PlacesOf(key);
        const std::size_t place = places == nullptr ? kNoPlace : places->PlaceOf(AttributeOf(key));
        if (place != kNoPlace) {
            return &places->entries[place];
        }
        if (places == nullptr || !places->hasMore) {
            return nullptr;
        }
    }
    const auto found = others_.find(key);
    return found == others_.end() ? nullptr : &found->second;
}

IndexEntry& IndexEntries::At(IndexKey key)
{
    if (!IsOfValue(key)) {
        return others_[key];
    }
    if (IndexEntry* const entry = Find(key); entry != nullptr) {
        return *entry;
    }
    if (ValueOf(key) >= values_.size()) {
        values_.resize(std::size_t{ValueOf(key)} + 1);
    }
    ValuePlaces& places = values_[ValueOf(key)];
    if (const std::size_t place = places.PlaceOf(kNoAtom); place != kNoPlace) {
        places.attributes[place] = AttributeOf(key);
        return places.entries[place];
    }
    places.hasMore = true;
    return others_[key];
}

void IndexEntries::Erase(IndexKey key)
{
    const ValuePlaces* const places = PlacesOf(key);
    const std::size_t place = places == nullptr ? kNoPlace : places->PlaceOf(AttributeOf(key));
    if (place == kNoPlace) {
        others_.erase(key);
        return;
    }
    ValuePlaces& erased = values_[ValueOf(key)];
    erased.attributes[place] = kNoAtom;
    erased.entries[place] = {};
}

void IndexEntries::Clear()
{
    values_.clear();
    others_.clear();
}

}  // namespace HtmlEngine::Internal
