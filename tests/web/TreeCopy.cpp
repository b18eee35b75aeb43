#include "TreeCopy.h"

#include "html-engine/TreeReader.h"

#include <algorithm>
#include <stdexcept>

namespace WebTests {

namespace {

using HtmlEngine::kNoNodeHandle;
using HtmlEngine::NodeHandle;
using HtmlEngine::NodeKind;

void Check(bool fits, const std::string& what)
{
    if (!fits) {
        throw std::runtime_error(what);
    }
}

const char* NameOf(HtmlEngine::Namespace space)
{
    return space == HtmlEngine::Namespace::Svg ? "svg:" : "math:";
}

std::string Start(const std::string& name, const std::vector<std::string>& attributes,
                  std::uint64_t states)
{
    std::string text = "<" + name;
    for (std::size_t i = 0; i + 1 < attributes.size(); i += 2) {
        text += " " + attributes[i] + "=\"" + attributes[i + 1] + "\"";
    }
    return text + (states == 0 ? "" : " states " + std::to_string(states)) + ">";
}

void WriteNode(const HtmlEngine::TreeReader& reader, NodeHandle node, std::string& out)
{
    if (reader.Kind(node) != NodeKind::Element) {
        out += (reader.Kind(node) == NodeKind::Text ? "{#text " : "{#comment ") +
               std::string(reader.Text(node)) + "}";
        return;
    }
    std::vector<std::string> attributes;
    for (std::size_t i = 0; i < reader.AttributeCount(node); ++i) {
        const auto [name, value] = reader.AttributeAt(node, i);
        if (name == "class" && !attributes.empty() && attributes[0] == "class") {
            attributes[1] += " " + std::string(value);
        } else {
            attributes.emplace_back(name);
            attributes.emplace_back(value);
        }
    }
    const auto space = reader.NamespaceOf(node);
    out += Start((space == HtmlEngine::Namespace::Html ? "" : NameOf(space)) +
                     std::string(reader.TagName(node)),
                 attributes, reader.State(node));
    for (NodeHandle child = reader.FirstChild(node); child != kNoNodeHandle;
         child = reader.NextSibling(child)) {
        WriteNode(reader, child, out);
    }
    out += "</>";
}

}  // namespace

void TreeCopy::Apply(const Json& message)
{
    if (message.value("reset", false)) {
        nodes_.clear();
        root_ = 0;
    }
    nodesInMessage_ = 0;
    for (const Json& change : message.at("changes")) {
        Change(change);
    }
    Check(nodesInMessage_ <= 2000, "too many nodes in one message");
    remaining_ = message.at("remaining");
    ++messages_;
}

TreeCopy::Node& TreeCopy::At(const Json& number)
{
    const auto found = nodes_.find(number.get<std::uint64_t>());
    Check(found != nodes_.end(), "node " + number.dump() + " is not known");
    return found->second;
}

void TreeCopy::Change(const Json& change)
{
    const std::string kind = change.at(0);
    if (kind == "i") {
        Insert(change.at(1), change.at(2), change.at(3));
    } else if (kind == "r") {
        for (std::size_t i = 1; i < change.size(); ++i) {
            const std::uint64_t parent = At(change[i]).parent;
            std::erase(nodes_.at(parent).children, change[i].get<std::uint64_t>());
            Remove(change[i]);
        }
    } else if (kind == "t") {
        Check(At(change.at(1)).name.starts_with('#'), "an element has no text");
        At(change.at(1)).text = change.at(2);
    } else if (kind == "a") {
        At(change.at(1)).attributes = change.at(2).get<std::vector<std::string>>();
    } else {
        Check(kind == "s", "unknown change");
        At(change.at(1)).states = change.at(2);
    }
}

void TreeCopy::Insert(std::uint64_t parent, std::uint64_t previous, const Json& nodes)
{
    std::vector<std::uint64_t> numbers;
    for (const Json& node : nodes) {
        numbers.push_back(node.at(0));
        Enter(parent, node);
    }
    if (parent == 0) {
        Check(root_ == 0 && numbers.size() == 1, "a tree has one root");
        root_ = numbers[0];
        return;
    }
    auto& siblings = At(parent).children;
    auto place = siblings.begin();
    if (previous != 0) {
        place = std::find(siblings.begin(), siblings.end(), previous);
        Check(place != siblings.end(), "the previous sibling is none");
        ++place;
    }
    siblings.insert(place, numbers.begin(), numbers.end());
}

void TreeCopy::Enter(std::uint64_t parent, const Json& json)
{
    ++nodesInMessage_;
    const std::uint64_t number = json.at(0);
    Node node;
    node.parent = parent;
    if (json.size() <= 3) {
        node.name = json.size() == 2 ? "#text" : "#comment";
        node.text = json.back();
    } else {
        node.name =
            (json.size() == 6 ? json[5].get<std::string>() + ":" : "") + json[1].get<std::string>();
        node.attributes = json[2].get<std::vector<std::string>>();
        node.states = json[3];
        for (const Json& child : json[4]) {
            node.children.push_back(child.at(0));
            Enter(number, child);
        }
    }
    Check(number != 0 && nodes_.emplace(number, std::move(node)).second, "a number given twice");
}

void TreeCopy::Remove(std::uint64_t node)
{
    const std::vector<std::uint64_t> children = std::move(nodes_.at(node).children);
    nodes_.erase(node);
    for (const std::uint64_t child : children) {
        Remove(child);
    }
}

void TreeCopy::Write(std::uint64_t number, std::string& out) const
{
    const Node& node = nodes_.at(number);
    if (node.name.starts_with('#')) {
        out += "{" + node.name + " " + node.text + "}";
        return;
    }
    out += Start(node.name, node.attributes, node.states);
    for (const std::uint64_t child : node.children) {
        Write(child, out);
    }
    out += "</>";
}

std::string TreeCopy::Text() const
{
    std::string out;
    if (root_ != 0) {
        Write(root_, out);
    }
    return out;
}

template <class Visit>
void TreeCopy::VisitAll(std::uint64_t top, Visit visit) const
{
    std::vector<std::uint64_t> open{top};
    while (!open.empty()) {
        const std::uint64_t number = open.back();
        open.pop_back();
        const Node& node = nodes_.at(number);
        visit(number, node);
        open.insert(open.end(), node.children.rbegin(), node.children.rend());
    }
}

std::uint64_t TreeCopy::Find(const std::string& attribute, const std::string& value,
                             std::size_t n) const
{
    std::uint64_t match = 0;
    VisitAll(root_, [&](std::uint64_t number, const Node& node) {
        for (std::size_t i = 0; i + 1 < node.attributes.size(); i += 2) {
            if (node.attributes[i] == attribute && node.attributes[i + 1] == value && n-- == 0) {
                match = number;
            }
        }
    });
    return match;
}

std::string TreeCopy::TextOf(std::uint64_t element) const
{
    std::string text;
    VisitAll(element, [&](std::uint64_t, const Node& node) {
        text += node.name == "#text" ? node.text : "";
    });
    return text;
}

std::string TreeText(const HtmlEngine::Document& document)
{
    std::string out;
    WriteNode(HtmlEngine::TreeReader(document), document.NodeOf(document.Root()), out);
    return out;
}

}  // namespace WebTests
