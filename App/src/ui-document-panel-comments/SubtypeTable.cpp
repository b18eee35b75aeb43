#include "SubtypeTable.h"

#include "service-common/SingletonStaticData.h"

#include <atomic>
#include <cstddef>
#include <iterator>

namespace {

constexpr SubtypeEntry kSubtypes[] = {
    {"Text", L".text"},
    {"Highlight", L".highlight"},
    {"Underline", L".underline"},
    {"Squiggly", L".highlight"},
    {"StrikeOut", L".strikethrough"},
    {"Stamp", L".stamp"},
    {"Ink", L".pencil"},
    {"Line", L".pencil"},
    {"PolyLine", L".pencil"},
    {"Polygon", L".pencil"},
    {"Square", L".rectangle"},
    {"Circle", L".oval"},
    {"Caret", L".highlight"},
    {"Redact", L".redaction"},
};

// The atom of an entry's subtype, kept once it could be resolved.
Atom AtomOf(std::size_t entry)
{
    static std::atomic<Atom> atoms[std::size(kSubtypes)];  // kAtomNone: not resolved
    Atom atom = atoms[entry].load(std::memory_order_relaxed);
    if (atom == kAtomNone) {
        atom = AtomService::Resolve(kSubtypes[entry].subtype);
        atoms[entry].store(atom, std::memory_order_relaxed);
    }
    return atom;
}

}  // namespace

std::span<const SubtypeEntry> SubtypeTable()
{
    return kSubtypes;
}

std::wstring_view ClassNameOf(Atom subtype)
{
    std::wstring_view className;
    for (std::size_t entry = 0; entry < std::size(kSubtypes); ++entry) {
        if (AtomOf(entry) == subtype && subtype != kAtomNone) {
            className = kSubtypes[entry].className;
        }
    }
    return className;
}
