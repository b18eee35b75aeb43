#include "Compatibility.h"

#include <map>
#include <sstream>
#include <tuple>

namespace SdkLayout {

namespace {

// A line: what kind of thing it tells of, of what, and where in it.
struct Key {
    std::string kind;
    std::string subject;
    unsigned long place = 0;

    bool operator<(const Key& other) const
    {
        return std::tie(kind, subject, place) < std::tie(other.kind, other.subject, other.place);
    }
};
using Layout = std::map<Key, std::string>;

struct Rule {
    const char* kind;
    const char* rule;
};
// A kind without a rule is not compared.
constexpr Rule kRules[] = {
    {"export", "an export keeps its name and its arguments"},
    {"function", "a function of the platform libraries keeps its name and its arguments"},
    {"callback", "a callback keeps its arguments"},
    {"tag", "a tag never changes"},
    {"code", "a code never changes its meaning"},
    {"constant", "a constant keeps its number"},
    {"interface", "an interface keeps its name, and with it its id"},
    {"table", "a table never loses slots"},
    {"slot", "slots are never renumbered, and a method keeps its arguments"},
    {"event", "slots are never renumbered, and an event keeps its arguments"},
    {"struct", "a structure keeps its size"},
    {"field", "a field keeps its place and its type"},
};

// The one structure that says its own size, so that it may grow at its end.
constexpr const char* kGrowingStruct = "PDFunctionTable";

// A table that was below this size passes the validity test of objects
// (kImplausibleMethodTableSize).
constexpr unsigned long kImplausibleTable = 377;
constexpr unsigned long kEntrySize = 8;

Layout Read(const std::string& text)
{
    Layout layout;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t colon = line.find(": ");
        if (colon == std::string::npos) {
            continue;
        }
        Key key;
        std::istringstream words(line.substr(0, colon));
        words >> key.kind >> key.subject;
        if (key.kind == "code") {
            key.place = std::stoul(key.subject);
            key.subject.clear();
        } else {
            words >> key.place;
        }
        const std::string value = line.substr(colon + 2, line.find('\r') - colon - 2);
        std::string& known = layout[key];  // a code may have two names
        known += known.empty() ? value : ", " + value;
    }
    return layout;
}

std::string NameOf(const Key& key)
{
    if (key.kind == "code") {
        return "code " + std::to_string(key.place);
    }
    if (key.kind == "slot" || key.kind == "event") {
        return "slot " + std::to_string(key.place) + " of " + key.subject;
    }
    if (key.kind == "field") {
        return "offset " + std::to_string(key.place) + " of " + key.subject;
    }
    return (key.kind == "table" ? "the table of " : key.kind + " ") + key.subject;
}

unsigned long NumberAt(const Layout& layout, const char* kind, const std::string& subject)
{
    const auto found = layout.find({kind, subject});
    return found == layout.end() ? 0 : std::stoul(found->second);
}

// The rule that something new breaks; null when nothing is against it.
const char* RuleAgainst(const Key& key, const Layout& released, const Layout& present)
{
    const unsigned long table = NumberAt(released, "table", key.subject);
    if (key.kind == "event" && table != 0) {
        return "an event may be added only with a new interface, as those who subscribe do not "
               "look "
               "at the size of a table";
    }
    if (key.kind == "slot" && table != 0 && key.place < table / kEntrySize) {
        return "a method may be added only at the end of an interface, as other slots may be in "
               "use";
    }
    if (key.kind == "slot" && table != 0 && table < kImplausibleTable &&
        NumberAt(present, "table", key.subject) >= kImplausibleTable) {
        return "a table of fewer than 377 bytes stays so, as a larger one is taken for damaged";
    }
    const unsigned long size = NumberAt(released, "struct", key.subject);
    if (key.kind == "field" && size != 0 && (key.subject != kGrowingStruct || key.place < size)) {
        return "a structure never gets another field";
    }
    return nullptr;
}

// Whether a size may have changed as it has.
bool MayGrow(const Key& key, const std::string& before, const std::string& after)
{
    return (key.kind == "table" || (key.kind == "struct" && key.subject == kGrowingStruct)) &&
           std::stoul(after) > std::stoul(before);
}

}  // namespace

Comparison Compare(const std::string& released, const std::string& present)
{
    const Layout before = Read(released);
    const Layout after = Read(present);
    Comparison comparison;
    for (const auto& [key, value] : before) {
        const auto now = after.find(key);
        if (now != after.end() && (now->second == value || MayGrow(key, value, now->second))) {
            continue;
        }
        for (const Rule& rule : kRules) {
            if (key.kind == rule.kind) {
                comparison.breaks.push_back(NameOf(key) + " was " + value + ", is " +
                                            (now == after.end() ? "gone" : now->second) + ": " +
                                            rule.rule);
            }
        }
    }
    for (const auto& [key, value] : after) {
        if (before.contains(key) || key.kind == "table") {
            continue;
        }
        const char* const rule = RuleAgainst(key, before, after);
        const std::string added = NameOf(key) + " is " + value;
        if (rule == nullptr) {
            comparison.additions.push_back(added);
        } else {
            comparison.breaks.push_back(added + ", new: " + rule);
        }
    }
    return comparison;
}

}  // namespace SdkLayout
