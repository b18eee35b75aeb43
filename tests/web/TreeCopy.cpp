#include "TreeCopy.h"

#include "html-engine/TreeReader.h"
#include "web/PanelWriter.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

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

// What is known of a list's children.
std::string ListText(const TreeCopy::List& list, std::size_t shown)
{
    std::string text = "[" + std::to_string(list.from) + "+" + std::to_string(shown) + " of";
    for (const std::int64_t size : list.sizes) {
        text += " " + std::to_string(size);
    }
    return text + (list.isOfPages ? "]" : " " + std::to_string(list.count) + "]");
}

class EngineText {
public:
    EngineText(const HtmlEngine::Document& document, const TreeCopy& copy)
        : document_(document), reader_(document), copy_(copy)
    {
    }

    std::string Write()
    {
        WriteNode(document_.NodeOf(document_.Root()));
        return std::move(out_);
    }

private:
    void WriteNode(NodeHandle node)
    {
        if (reader_.Kind(node) != NodeKind::Element) {
            out_ += (reader_.Kind(node) == NodeKind::Text ? "{#text " : "{#comment ") +
                    std::string(reader_.Text(node)) + "}";
            return;
        }
        std::vector<std::string> attributes;
        for (std::size_t i = 0; i < reader_.AttributeCount(node); ++i) {
            const auto [name, value] = reader_.AttributeAt(node, i);
            if (name == "class" && !attributes.empty() && attributes[0] == "class") {
                attributes[1] += " " + std::string(value);
            } else {
                attributes.emplace_back(name);
                attributes.emplace_back(value);
            }
        }
        const auto space = reader_.NamespaceOf(node);
        out_ += Start((space == HtmlEngine::Namespace::Html ? "" : NameOf(space)) +
                          std::string(reader_.TagName(node)),
                      attributes, reader_.State(node));
        WriteChildren(node);
        out_ += "</>";
    }

    void WriteChildren(NodeHandle node)
    {
        const std::uint64_t id = Workbench::IdOf(node);
        const TreeCopy::List* const list = copy_.ListWith(id);
        if (list != nullptr) {
            WriteList(node, *list, copy_.ShownOf(id));
            return;
        }
        if (copy_.IsClosed(id)) {
            out_ += "[closed]";
            return;
        }
        for (NodeHandle child = reader_.FirstChild(node); child != kNoNodeHandle;
             child = reader_.NextSibling(child)) {
            WriteNode(child);
        }
    }

    void WriteList(NodeHandle node, const TreeCopy::List& seen, std::size_t shown)
    {
        const HtmlEngine::ElementHandle element = document_.ElementOf(node);
        TreeCopy::List list;
        list.from = seen.from;
        list.isOfPages = seen.isOfPages;
        list.count = document_.ChildCount(element);
        for (std::size_t i = 0; seen.isOfPages && i < list.count; ++i) {
            list.sizes.push_back(SizeOf(document_.Child(element, i)));
        }
        out_ += ListText(list, shown);
        for (std::size_t i = 0; i < shown; ++i) {
            WriteNode(document_.NodeOf(document_.Child(element, seen.from + i)));
        }
    }

    std::int64_t SizeOf(HtmlEngine::ElementHandle pageItem)
    {
        HtmlEngine::ElementHandle items = HtmlEngine::kNoElement;
        document_.SelectFirst(pageItem, ":root > li > div > ul.comments", items);
        const auto count = static_cast<std::int64_t>(document_.ChildCount(items));
        const auto states = document_.State(document_.Child(pageItem, 0));
        return (states & HtmlEngine::ElementState::kCollapsed) != 0 ? -1 - count : count;
    }

    const HtmlEngine::Document& document_;
    const HtmlEngine::TreeReader reader_;
    const TreeCopy& copy_;
    std::string out_;
};

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
    } else if (kind == "w") {
        MoveWindow(change);
    } else if (kind == "z") {
        List& list = At(change.at(1)).list.value();
        const std::size_t at = change.at(2);
        for (std::size_t i = 0; i < change.at(3).size(); ++i) {
            list.sizes.at(at + i) = change.at(3)[i];
        }
        NoteChanged(change.at(1));
    } else if (kind == "a") {
        At(change.at(1)).attributes = change.at(2).get<std::vector<std::string>>();
    } else {
        Check(kind == "s", "unknown change");
        At(change.at(1)).states = change.at(2);
        NoteChanged(change.at(1));
    }
}

void TreeCopy::MoveWindow(const Json& change)
{
    Node& node = At(change.at(1));
    Check(node.list.has_value(), "no list");
    List& list = *node.list;
    const std::size_t from = change.at(2);
    const std::size_t to = change.at(3);
    std::vector<std::optional<std::uint64_t>> all(list.count);
    std::copy(node.children.begin(), node.children.end(),
              all.begin() + static_cast<std::ptrdiff_t>(list.from));
    if (change.size() > 4) {
        const auto at = change.at(4).get<std::ptrdiff_t>();
        const auto removed = change.at(5).get<std::ptrdiff_t>();
        const Json& added = change.at(6);
        const std::size_t count = list.isOfPages ? added.size() : added.get<std::size_t>();
        Check(static_cast<std::size_t>(at + removed) <= all.size(), "what is not there goes");
        for (std::ptrdiff_t i = at; i < at + removed; ++i) {
            if (const auto child = all[static_cast<std::size_t>(i)]) {
                Remove(*child);
            }
        }
        all.erase(all.begin() + at, all.begin() + at + removed);
        all.insert(all.begin() + at, count, std::nullopt);
        if (list.isOfPages) {
            list.sizes.erase(list.sizes.begin() + at, list.sizes.begin() + at + removed);
            const auto sizes = added.get<std::vector<std::int64_t>>();
            list.sizes.insert(list.sizes.begin() + at, sizes.begin(), sizes.end());
        }
        list.count = all.size();
        NoteChanged(change.at(1));
    }
    Check(to <= all.size() && from <= to, "a window beyond the list");
    node.children.clear();
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (all[i] && i >= from && i < to) {
            node.children.push_back(*all[i]);
        } else if (all[i]) {
            Remove(*all[i]);
        }
    }
    list.from = from;
}

// A page item in the copy counts the items that it has.
void TreeCopy::NoteChanged(std::uint64_t number)
{
    const std::optional<List> items = nodes_.at(number).list;
    std::uint64_t inside = 0;
    for (std::uint64_t at = number; at != 0; at = nodes_.at(at).parent) {
        Node& node = nodes_.at(at);
        if (node.list && node.list->isOfPages) {
            const auto place = std::find(node.children.begin(), node.children.end(), inside);
            if (place != node.children.end()) {
                const auto& parts = nodes_.at(inside).children;
                const auto isElement = [this](std::uint64_t part) {
                    return !nodes_.at(part).name.starts_with('#');
                };
                const auto li = std::find_if(parts.begin(), parts.end(), isElement);
                Check(li != parts.end(), "a page item without a page");
                const Node& page = nodes_.at(*li);
                std::int64_t& size = node.list->sizes.at(
                    node.list->from + static_cast<std::size_t>(place - node.children.begin()));
                const std::int64_t count = items && !items->isOfPages
                                               ? static_cast<std::int64_t>(items->count)
                                               : (size < 0 ? -1 - size : size);
                size =
                    (page.states & HtmlEngine::ElementState::kCollapsed) != 0 ? -1 - count : count;
            }
            changedLists_.push_back(at);
            return;
        }
        inside = at;
    }
}

const TreeCopy::List* TreeCopy::ListWith(std::uint64_t element) const
{
    const auto found = nodes_.find(element);
    return found != nodes_.end() && found->second.list ? &*found->second.list : nullptr;
}

std::vector<std::uint64_t> TreeCopy::TakeChangedLists()
{
    std::vector<std::uint64_t> lists = std::exchange(changedLists_, {});
    std::sort(lists.begin(), lists.end());
    lists.erase(std::unique(lists.begin(), lists.end()), lists.end());
    std::erase_if(lists, [this](std::uint64_t list) { return !nodes_.contains(list); });
    return lists;
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

std::vector<std::uint64_t> TreeCopy::ClosedTooltips() const
{
    std::vector<std::uint64_t> closed;
    VisitAll(root_, [&](std::uint64_t number, const Node& node) {
        if (node.isClosed) {
            closed.push_back(number);
        }
    });
    return closed;
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
    At(parent).isClosed = false;
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
        if (json[4].is_null()) {
            node.isClosed = true;
        } else if (json[4].is_object()) {
            node.list = List{};
            node.list->isOfPages = json[4].contains("pages");
            if (node.list->isOfPages) {
                node.list->sizes = json[4].at("pages").get<std::vector<std::int64_t>>();
                changedLists_.push_back(number);
            }
            node.list->count = node.list->isOfPages ? node.list->sizes.size()
                                                    : json[4].at("items").get<std::size_t>();
        } else {
            for (const Json& child : json[4]) {
                node.children.push_back(child.at(0));
                Enter(number, child);
            }
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
    out += node.isClosed ? "[closed]" : "";
    out += node.list ? ListText(*node.list, node.children.size()) : "";
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

std::string TreeText(const HtmlEngine::Document& document, const TreeCopy& copy)
{
    return EngineText(document, copy).Write();
}

}  // namespace WebTests
