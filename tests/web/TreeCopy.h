// A copy of the panel's tree that is kept by the messages alone, as a client keeps it: of the lists
// the window that was asked for, of the tooltips those that were. And the tree of the engine in the
// same form.
#pragma once

#include "html-engine/Document.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace WebTests {

class TreeCopy {
public:
    // Applies one `panel` message. Throws std::runtime_error for one that does not fit the copy: a
    // parent, sibling or node that is not known, a number given twice, or too many nodes.
    void Apply(const nlohmann::json& message);

    // The whole tree: names, attributes, states, texts, comments, and of lists what is known of the
    // children outside the window.
    std::string Text() const;

    // The part of a list that the copy has; nullptr for every other element.
    struct List {
        std::size_t from = 0;
        std::vector<std::int64_t> sizes;  // of all children of a list of page items
        std::size_t count = 0;
        bool isOfPages = false;
    };
    const List* ListWith(std::uint64_t element) const;
    // Children of a list in the copy.
    std::size_t ShownOf(std::uint64_t list) const { return nodes_.at(list).children.size(); }
    // Whether the copy has the element, and its children were held back.
    bool IsClosed(std::uint64_t element) const
    {
        const auto found = nodes_.find(element);
        return found != nodes_.end() && found->second.isClosed;
    }
    // The lists of page items whose rows may have changed since the last call.
    std::vector<std::uint64_t> TakeChangedLists();
    std::vector<std::uint64_t> ClosedTooltips() const;

    // Number of the n-th element in document order with that attribute and value; 0: none.
    std::uint64_t Find(const std::string& attribute, const std::string& value,
                       std::size_t n = 0) const;
    std::string TextOf(std::uint64_t element) const;
    std::uint64_t StatesOf(std::uint64_t element) const { return nodes_.at(element).states; }
    bool Contains(std::uint64_t node) const { return nodes_.contains(node); }

    std::uint64_t Remaining() const noexcept { return remaining_; }
    std::size_t MessageCount() const noexcept { return messages_; }

private:
    using Json = nlohmann::json;
    struct Node {
        std::uint64_t parent = 0;
        std::string name;  // "#text" and "#comment" for those
        std::string text;
        std::vector<std::string> attributes;
        std::uint64_t states = 0;
        std::vector<std::uint64_t> children;
        std::optional<List> list;
        bool isClosed = false;
    };

    void Change(const Json& change);
    void Insert(std::uint64_t parent, std::uint64_t previous, const Json& nodes);
    void Enter(std::uint64_t parent, const Json& node);
    void Remove(std::uint64_t node);
    void MoveWindow(const Json& change);
    void NoteChanged(std::uint64_t node);
    void Write(std::uint64_t node, std::string& out) const;
    template <class Visit>
    void VisitAll(std::uint64_t top, Visit visit) const;
    Node& At(const Json& number);

    std::unordered_map<std::uint64_t, Node> nodes_;
    std::uint64_t root_ = 0;
    std::uint64_t remaining_ = 0;
    std::size_t messages_ = 0;
    std::size_t nodesInMessage_ = 0;
    std::vector<std::uint64_t> changedLists_;
};

// The engine's tree as TreeCopy::Text would give it, in the windows that the copy has.
std::string TreeText(const HtmlEngine::Document& document, const TreeCopy& copy);

}  // namespace WebTests
