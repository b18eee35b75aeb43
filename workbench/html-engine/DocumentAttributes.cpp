// Attributes, classes, inline style and states of a Document's elements.

#include "html-engine/Document.h"
#include "html-engine/internal/Ascii.h"
#include "html-engine/internal/DocumentParts.h"
#include "html-engine/internal/InlineStyle.h"
#include "html-engine/internal/Utf8.h"

#include <algorithm>
#include <bit>

namespace HtmlEngine {

using namespace Internal;

namespace {

// Whether the parser would read the name back from a tag.
bool IsAttributeName(std::string_view name)
{
    return !name.empty() && std::none_of(name.begin(), name.end(), [](char c) {
        return static_cast<unsigned char>(c) <= ' ' || c == '\x7F' || c == '"' || c == '\'' ||
               c == '<' || c == '>' || c == '/' || c == '=';
    });
}

// Whether an attribute of this name names classes: a point, and something else behind it.
bool NamesClasses(std::string_view name)
{
    return name.size() > 1 && name.front() == '.' &&
           name.find_first_not_of('.') != std::string_view::npos;
}

// Calls `function` with each class in `.one.two`.
template <typename Function>
void ForEachPointedClass(std::string_view name, Function&& function)
{
    std::string words(name);
    std::replace(words.begin(), words.end(), '.', ' ');
    ForEachWord(words, function);
}

// Edits a copy of an element's attributes, which owns its references.
class AttributeEditor {
public:
    AttributeEditor(Document::Parts& parts, NodeId element)
        : parts_(parts), element_(element), entries_(parts.CopyAttributes(element))
    {
    }

    AttributeEditor(const AttributeEditor&) = delete;
    AttributeEditor& operator=(const AttributeEditor&) = delete;
    ~AttributeEditor() { Release(entries_); }

    void Set(std::string_view name, std::string_view value)
    {
        AtomTable& atoms = parts_.tree.Atoms();
        const Atom nameAtom = atoms.Acquire(name);
        const Atom valueAtom = atoms.Acquire(value);
        for (AttributeEntry& entry : entries_) {
            if (entry.name == nameAtom) {
                atoms.Release(nameAtom);
                atoms.Release(entry.value);
                entry.value = valueAtom;
                return;
            }
        }
        entries_.push_back({nameAtom, valueAtom});
    }

    void Remove(Atom name)
    {
        RemoveIf([&](const AttributeEntry& entry) { return entry.name == name; });
    }

    void AddClass(std::string_view word)
    {
        const AttributeEntry added{Acquired(parts_.tree.Names().classAttribute),
                                   parts_.tree.Atoms().Acquire(word)};
        const auto behindClasses =
            std::find_if(entries_.begin(), entries_.end(), [&](const AttributeEntry& entry) {
                return entry.name != added.name || entry.value == added.value;
            });
        if (behindClasses != entries_.end() && behindClasses->name == added.name) {
            Release({added});
            return;
        }
        entries_.insert(behindClasses, added);
    }

    void RemoveClass(std::string_view word)
    {
        const Atom value = parts_.tree.Atoms().Find(word);
        const Atom name = parts_.tree.Names().classAttribute;
        RemoveIf([&](const AttributeEntry& entry) {
            return entry.name == name && entry.value == value;
        });
    }

    // Puts the copy in place; false when it says the same as before.
    bool Commit()
    {
        const auto old = parts_.At(element_).element.attributes.Entries();
        const auto same = [](const AttributeEntry& a, const AttributeEntry& b) {
            return a.name == b.name && a.value == b.value;
        };
        if (std::equal(old.begin(), old.end(), entries_.begin(), entries_.end(), same)) {
            return false;
        }
        parts_.tree.SetAttributes(element_, entries_);
        entries_.clear();
        return true;
    }

private:
    Atom Acquired(Atom atom)
    {
        parts_.tree.Atoms().AddReference(atom);
        return atom;
    }

    void Release(const std::vector<AttributeEntry>& entries)
    {
        for (const AttributeEntry& entry : entries) {
            parts_.tree.Atoms().Release(entry.name);
            parts_.tree.Atoms().Release(entry.value);
        }
    }

    template <typename Predicate>
    void RemoveIf(Predicate&& predicate)
    {
        const auto removed =
            std::stable_partition(entries_.begin(), entries_.end(),
                                  [&](const AttributeEntry& entry) { return !predicate(entry); });
        Release({removed, entries_.end()});
        entries_.erase(removed, entries_.end());
    }

    Document::Parts& parts_;
    NodeId element_;
    std::vector<AttributeEntry> entries_;
};

}  // namespace

std::vector<AttributeEntry> Document::Parts::CopyAttributes(NodeId element)
{
    const auto entries = At(element).element.attributes.Entries();
    for (const AttributeEntry& entry : entries) {
        tree.Atoms().AddReference(entry.name);
        tree.Atoms().AddReference(entry.value);
    }
    return {entries.begin(), entries.end()};
}

std::optional<std::string> Document::Attribute(ElementHandle element, std::string_view name) const
{
    const NodeId id = parts_->Resolve(element);
    if (id == kNoNode) {
        return std::nullopt;
    }
    const Tree& tree = parts_->tree;
    const AttributeList& attributes = parts_->At(id).element.attributes;
    if (NamesClasses(name)) {
        bool all = true;
        ForEachPointedClass(name, [&](std::string_view word) {
            const Atom value = tree.Atoms().Find(word);
            all = all && value != kNoAtom && attributes.Has(tree.Names().classAttribute, value);
        });
        return all ? std::optional<std::string>(std::string()) : std::nullopt;
    }
    const Atom atom = tree.Atoms().Find(AsciiLower(name));
    std::optional<std::string> value;
    if (atom == kNoAtom) {
        return value;
    }
    for (const AttributeEntry& entry : attributes.Entries()) {
        if (entry.name == atom) {
            value = value.has_value() ? *value + ' ' : std::string();
            *value += tree.Atoms().Text(entry.value);
        }
    }
    return value;
}

std::vector<std::pair<std::string, std::string>> Document::Attributes(ElementHandle element) const
{
    std::vector<std::pair<std::string, std::string>> attributes;
    const NodeId id = parts_->Resolve(element);
    if (id == kNoNode) {
        return attributes;
    }
    const Tree& tree = parts_->tree;
    Atom last = kNoAtom;
    for (const AttributeEntry& entry : parts_->At(id).element.attributes.Entries()) {
        const std::string_view value = tree.Atoms().Text(entry.value);
        if (entry.name == last) {
            attributes.back().second.append(" ").append(value);
        } else {
            attributes.emplace_back(tree.Atoms().Text(entry.name), value);
        }
        last = entry.name;
    }
    return attributes;
}

Result Document::SetAttribute(ElementHandle element, std::string_view name, std::string_view value)
{
    const NodeId id = parts_->Resolve(element);
    if (id == kNoNode) {
        return Result::UnknownElement;
    }
    std::string repairedName;
    std::string repairedValue;
    name = RepairUtf8(name, repairedName);
    value = RepairUtf8(value, repairedValue);
    if (!IsAttributeName(name)) {
        return Result::BadName;
    }
    const KnownNames& names = parts_->tree.Names();
    const std::string lower = AsciiLower(name);
    AttributeEditor editor(*parts_, id);
    if (NamesClasses(name)) {
        ForEachPointedClass(name, [&](std::string_view word) { editor.AddClass(word); });
    } else if (lower == "class") {
        editor.Remove(names.classAttribute);
        ForEachWord(value, [&](std::string_view word) { editor.AddClass(word); });
    } else {
        editor.Set(lower, value);
    }
    bool changed = editor.Commit();
    if (lower == "disabled" && (parts_->At(id).element.states & ElementState::kDisabled) == 0) {
        parts_->tree.SetStates(id, parts_->At(id).element.states | ElementState::kDisabled);
        changed = true;
    }
    parts_->changeCount += changed ? 1 : 0;
    return Result::Success;
}

Result Document::RemoveAttribute(ElementHandle element, std::string_view name)
{
    const NodeId id = parts_->Resolve(element);
    if (id == kNoNode) {
        return Result::UnknownElement;
    }
    AttributeEditor editor(*parts_, id);
    const Atom atom = parts_->tree.Atoms().Find(AsciiLower(name));
    if (NamesClasses(name)) {
        ForEachPointedClass(name, [&](std::string_view word) { editor.RemoveClass(word); });
    } else {
        editor.Remove(atom);
    }
    if (editor.Commit()) {
        if (atom == parts_->tree.Names().disabledAttribute) {
            parts_->tree.SetStates(id, parts_->At(id).element.states & ~ElementState::kDisabled);
        }
        ++parts_->changeCount;
    }
    return Result::Success;
}

std::string Document::Style(ElementHandle element, std::string_view property) const
{
    const NodeId id = parts_->Resolve(element);
    const Atom style =
        id == kNoNode ? kNoAtom
                      : parts_->At(id).element.attributes.Find(parts_->tree.Names().styleAttribute);
    return style == kNoAtom
               ? std::string()
               : std::string(InlineStyle(parts_->tree.Atoms().Text(style)).Get(property));
}

Result Document::SetStyle(ElementHandle element, std::string_view property, std::string_view value)
{
    if (!IsKnown(element)) {
        return Result::UnknownElement;
    }
    std::string repairedProperty;
    std::string repairedValue;
    InlineStyle style(Attribute(element, "style").value_or(std::string()));
    const std::string before(style.Get(property));
    if (!style.Set(RepairUtf8(property, repairedProperty), RepairUtf8(value, repairedValue))) {
        return Result::BadName;
    }
    if (style.Get(property) == before) {
        return Result::Success;
    }
    const std::string text = style.ToText();
    return text.empty() ? RemoveAttribute(element, "style") : SetAttribute(element, "style", text);
}

// ---- States ----

std::uint32_t Document::State(ElementHandle element) const
{
    const NodeId id = parts_->Resolve(element);
    return id == kNoNode ? 0 : parts_->At(id).element.states;
}

Result Document::SetState(ElementHandle element, std::uint32_t setBits, std::uint32_t clearBits)
{
    const NodeId id = parts_->Resolve(element);
    if (id == kNoNode) {
        return Result::UnknownElement;
    }
    const std::uint32_t old = parts_->At(id).element.states;
    std::uint32_t states = (old & ~clearBits) | setBits;
    if ((setBits & ElementState::kExpanded) != 0) {
        states &= ~ElementState::kCollapsed;
    } else if ((setBits & ElementState::kCollapsed) != 0) {
        states &= ~ElementState::kExpanded;
    }
    if ((setBits & ElementState::kCurrent) != 0) {
        parts_->TakeCurrentFor(id);
    }
    if (states != old) {
        parts_->tree.SetStates(id, states);
        ++parts_->changeCount;
    }
    return Result::Success;
}

void Document::Parts::TakeCurrentFor(NodeId element)
{
    constexpr IndexKey kKey =
        MakeIndexKey(IndexKind::State, std::countr_zero(ElementState::kCurrent));
    const IndexEntry* const entry = tree.Index().Find(kKey);
    if (!At(element).Is(NodeFlag::kAttached) || entry == nullptr) {
        return;
    }
    const NodeId handlerElement = HandlerElementAbove(element);
    std::vector<NodeId> losing;
    const auto consider = [&](NodeId id) {
        if (id != element && HandlerElementAbove(id) == handlerElement) {
            losing.push_back(id);
        }
    };
    if (entry->many == nullptr) {
        consider(entry->only);
    } else {
        OrderedNodeList::Cursor cursor;
        for (NodeId id = entry->many->At(cursor); id != kNoNode; id = entry->many->At(cursor)) {
            consider(id);
            cursor = entry->many->Next(cursor);
        }
    }
    for (const NodeId id : losing) {
        tree.SetStates(id, At(id).element.states & ~ElementState::kCurrent);
        ++changeCount;
    }
}

bool Document::IsHidden(ElementHandle element) const
{
    const Atom styleAttribute = parts_->tree.Names().styleAttribute;
    for (NodeId id = parts_->Resolve(element); id != kNoNode; id = parts_->At(id).parent) {
        const Atom style = parts_->At(id).element.attributes.Find(styleAttribute);
        if (style != kNoAtom && InlineStyle(parts_->tree.Atoms().Text(style)).Hides()) {
            return true;
        }
    }
    return false;
}

bool Document::IsDisabled(ElementHandle element) const
{
    for (NodeId id = parts_->Resolve(element); id != kNoNode; id = parts_->At(id).parent) {
        if ((parts_->At(id).element.states & ElementState::kDisabled) != 0) {
            return true;
        }
    }
    return false;
}

}  // namespace HtmlEngine
