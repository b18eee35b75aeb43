#include "SubtypeTable.h"

#include "service-common/SingletonStaticData.h"

#include <unordered_map>

namespace {

constexpr SubtypeEntry kSubtypes[] = {
    {"Text", L"Text", L".text"},
    {"Link", L"Link", L""},
    {"Highlight", L"Highlight", L".highlight"},
    {"Underline", L"Underline", L".underline"},
    {"Squiggly", L"Squiggly", L".highlight"},
    {"StrikeOut", L"StrikeOut", L".strikethrough"},
    {"Popup", L"Popup", L""},
    {"Widget", L"Widget", L""},
    {"Stamp", L"Stamp", L".stamp"},
    {"Ink", L"Ink", L".pencil"},
    {"Line", L"Line", L".pencil"},
    {"PolyLine", L"PolyLine", L".pencil"},
    {"Polygon", L"Polygon", L".pencil"},
    {"Square", L"Square", L".rectangle"},
    {"Circle", L"Circle", L".oval"},
    {"TrapNet", L"TrapNet", L""},
    {"Caret", L"Caret", L".highlight"},
    {"Redact", L"Redact", L".redaction"},
};

}  // namespace

const SubtypeEntry* FindSubtype(Atom subtype)
{
    static const auto table = [] {
        std::unordered_map<Atom, const SubtypeEntry*> entries;
        for (const SubtypeEntry& entry : kSubtypes) {
            entries.emplace(AtomService::Resolve(entry.subtype), &entry);
        }
        return entries;
    }();
    const auto found = table.find(subtype);
    return found == table.end() ? nullptr : found->second;
}
