// Interned strings of one document: names of elements and attributes, classes, and attribute
// values. Equal text means equal atom, so matching compares numbers, and the thousands of copies of
// one value in a list are stored once. UI thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace HtmlEngine::Internal {

// Names one interned string of one AtomTable; 0 is no string (the empty string has an atom).
using Atom = std::uint32_t;

constexpr Atom kNoAtom = 0;

// Index keys keep an atom in 30 bits.
constexpr Atom kMaxAtom = (1U << 30) - 1;

class AtomTable {
public:
    AtomTable();

    // The atom of `text`, made if need be; the caller owns one reference. Fails with
    // std::length_error when the table is full.
    Atom Acquire(std::string_view text);

    void AddReference(Atom atom) { ++entries_[atom].references; }

    // Gives a reference back; with the last one the atom ends and its number may be used again.
    void Release(Atom atom);

    // The atom of `text`, or kNoAtom when no such string is held. No reference is taken.
    Atom Find(std::string_view text) const;

    // Valid while the atom is.
    std::string_view Text(Atom atom) const { return entries_[atom].text; }

    std::size_t Size() const { return size_; }

private:
    struct Entry {
        std::string text;
        std::size_t hash = 0;
        std::uint32_t references = 0;
        Atom next = kNoAtom;
    };

    void Grow();

    std::deque<Entry> entries_;
    std::vector<Atom> buckets_;
    Atom firstFree_ = kNoAtom;
    std::size_t size_ = 0;
};

}  // namespace HtmlEngine::Internal
