#include "SubtypeTable.h"

#include "service-common/SingletonStaticData.h"

#include <unordered_map>

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

}  // namespace

std::span<const SubtypeEntry> SubtypeTable()
{
    return kSubtypes;
}

std::wstring_view ClassNameOf(Atom subtype)
{
    static const auto classes = [] {
        std::unordered_map<Atom, std::wstring_view> names;
        for (const SubtypeEntry& entry : kSubtypes) {
            names.emplace(AtomService::Resolve(entry.subtype), entry.className);
        }
        return names;
    }();
    const auto found = classes.find(subtype);
    return found == classes.end() ? std::wstring_view() : found->second;
}
