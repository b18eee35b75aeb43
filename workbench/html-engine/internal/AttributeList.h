// The attributes of one element, pointer-sized: name and value atoms in serialisation order. Each
// class of the element is an entry of its own, named by the atom of "class", and these come first.
// Elements that were made alike share one list. Holds numbers only; the references that they stand
// for, which are held once for a list, are the Tree's business.
#pragma once

#include "html-engine/internal/AtomTable.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace HtmlEngine::Internal {

struct AttributeEntry {
    Atom name;
    Atom value;
};

static_assert(sizeof(AttributeEntry) == 8);

class AttributeList {
public:
    AttributeList() = default;
    AttributeList(const AttributeList&) = delete;
    AttributeList& operator=(const AttributeList&) = delete;
    ~AttributeList() { Assign({}); }

    std::span<const AttributeEntry> Entries() const
    {
        return block_ == nullptr ? std::span<const AttributeEntry>()
                                 : std::span<const AttributeEntry>(block_ + 1, block_->name);
    }

    // The value of the first entry with this name, or kNoAtom.
    Atom Find(Atom name) const
    {
        for (const AttributeEntry& entry : Entries()) {
            if (entry.name == name) {
                return entry.value;
            }
        }
        return kNoAtom;
    }

    bool Has(Atom name, Atom value) const
    {
        for (const AttributeEntry& entry : Entries()) {
            if (entry.name == name && entry.value == value) {
                return true;
            }
        }
        return false;
    }

    // Whether another element has this very list.
    bool IsShared() const { return block_ != nullptr && block_->value > 1; }

    // Takes a copy of `entries`, which must not be this list's own.
    void Assign(std::span<const AttributeEntry> entries);

    // Takes part in another list; this one must be empty.
    void Share(const AttributeList& other)
    {
        block_ = other.block_;
        if (block_ != nullptr) {
            ++block_->value;
        }
    }

private:
    // The entries, preceded by one whose `name` is their number and whose `value` is the number of
    // elements that have them; null when there are none.
    AttributeEntry* block_ = nullptr;
};

}  // namespace HtmlEngine::Internal
