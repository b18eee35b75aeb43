#include "html-engine/TreeReader.h"

#include "html-engine/internal/DocumentParts.h"

#include <span>

namespace HtmlEngine {

using namespace Internal;

TreeReader::TreeReader(const Document& document) : parts_(*document.parts_) {}

const Node* TreeReader::Find(NodeHandle node) const
{
    const NodeId id = parts_.ResolveNode(node);
    return id == kNoNode ? nullptr : &parts_.tree.Nodes()[id];
}

const Node* TreeReader::FindElement(NodeHandle node) const
{
    const Node* const found = Find(node);
    return found != nullptr && found->IsElement() ? found : nullptr;
}

NodeKind TreeReader::Kind(NodeHandle node) const
{
    const Node* const found = Find(node);
    return found == nullptr ? NodeKind::None : found->kind;
}

NodeHandle TreeReader::Parent(NodeHandle node) const
{
    const Node* const found = Find(node);
    return found == nullptr ? kNoNodeHandle : parts_.HandleOf(found->parent);
}

NodeHandle TreeReader::FirstChild(NodeHandle node) const
{
    const Node* const found = FindElement(node);
    return found == nullptr ? kNoNodeHandle : parts_.HandleOf(found->element.firstChild);
}

NodeHandle TreeReader::LastChild(NodeHandle node) const
{
    const Node* const found = FindElement(node);
    return found == nullptr ? kNoNodeHandle : parts_.HandleOf(found->element.lastChild);
}

NodeHandle TreeReader::NextSibling(NodeHandle node) const
{
    const Node* const found = Find(node);
    return found == nullptr ? kNoNodeHandle : parts_.HandleOf(found->next);
}

NodeHandle TreeReader::PreviousSibling(NodeHandle node) const
{
    const Node* const found = Find(node);
    return found == nullptr ? kNoNodeHandle : parts_.HandleOf(found->previous);
}

std::string_view TreeReader::Text(NodeHandle node) const
{
    const Node* const found = Find(node);
    return found == nullptr || found->IsElement() ? std::string_view() : found->text.View();
}

std::string_view TreeReader::TagName(NodeHandle node) const
{
    const Node* const found = FindElement(node);
    return found == nullptr ? std::string_view() : parts_.tree.Atoms().Text(found->name);
}

Namespace TreeReader::NamespaceOf(NodeHandle node) const
{
    const Node* const found = FindElement(node);
    if (found == nullptr || !found->Is(NodeFlag::kForeign)) {
        return Namespace::Html;
    }
    return found->Is(NodeFlag::kMathMl) ? Namespace::MathMl : Namespace::Svg;
}

std::size_t TreeReader::AttributeCount(NodeHandle node) const
{
    const Node* const found = FindElement(node);
    return found == nullptr ? 0 : found->element.attributes.Entries().size();
}

TreeReader::Attribute TreeReader::AttributeAt(NodeHandle node, std::size_t index) const
{
    const Node* const found = FindElement(node);
    if (found == nullptr || index >= found->element.attributes.Entries().size()) {
        return {};
    }
    const AttributeEntry& entry = found->element.attributes.Entries()[index];
    const AtomTable& atoms = parts_.tree.Atoms();
    return {atoms.Text(entry.name), atoms.Text(entry.value)};
}

std::uint32_t TreeReader::State(NodeHandle node) const
{
    const Node* const found = FindElement(node);
    return found == nullptr ? 0 : found->element.states;
}

}  // namespace HtmlEngine
