#include "html-engine/internal/ChildPositions.h"

#include "html-engine/internal/TreeWalk.h"

#include <algorithm>

namespace HtmlEngine::Internal {

namespace {

// Up to this many children are counted through.
constexpr std::size_t kFewChildren = 16;

// How far from its hint an element is looked for before all hints are renewed.
constexpr std::size_t kHintReach = 32;

}  // namespace

NodeId ChildPositions::Child(NodeId parent, std::size_t index)
{
    const std::size_t count = nodes_[parent].element.elementCount;
    if (index >= count) {
        return kNoNode;
    }
    if (count > kFewChildren) {
        return ListOf(parent)[index];
    }
    NodeId child = FirstElementChild(nodes_, parent);
    for (; index > 0; --index) {
        child = NextElementSibling(nodes_, child);
    }
    return child;
}

std::size_t ChildPositions::IndexOf(NodeId element)
{
    const NodeId parent = nodes_[element].parent;
    if (parent == kNoNode) {
        return 0;
    }
    if (nodes_[parent].element.elementCount > kFewChildren) {
        return Locate(ListOf(parent), element);
    }
    std::size_t index = 0;
    for (NodeId id = PreviousElementSibling(nodes_, element); id != kNoNode;
         id = PreviousElementSibling(nodes_, id)) {
        ++index;
    }
    return index;
}

void ChildPositions::Inserted(NodeId parent, NodeId first, std::size_t count)
{
    const auto found = lists_.find(parent);
    if (found == lists_.end()) {
        return;
    }
    List& list = found->second;
    const NodeId before = PreviousElementSibling(nodes_, first);
    const std::size_t index = before == kNoNode ? 0 : Locate(list, before) + 1;
    List added;
    added.reserve(count);
    for (NodeId id = first; added.size() < count; id = NextElementSibling(nodes_, id)) {
        nodes_[id].element.positionHint = static_cast<std::uint32_t>(index + added.size());
        added.push_back(id);
    }
    list.insert(list.begin() + static_cast<std::ptrdiff_t>(index), added.begin(), added.end());
}

void ChildPositions::Removing(NodeId parent, NodeId first, std::size_t count)
{
    const auto found = lists_.find(parent);
    if (found == lists_.end()) {
        return;
    }
    List& list = found->second;
    const auto from = list.begin() + static_cast<std::ptrdiff_t>(Locate(list, first));
    list.erase(from, from + static_cast<std::ptrdiff_t>(count));
}

void ChildPositions::Forget(NodeId parent)
{
    if (!lists_.empty()) {
        lists_.erase(parent);
    }
}

ChildPositions::List& ChildPositions::ListOf(NodeId parent)
{
    const auto [found, isNew] = lists_.try_emplace(parent);
    List& list = found->second;
    if (isNew) {
        list.reserve(nodes_[parent].element.elementCount);
        for (NodeId id = FirstElementChild(nodes_, parent); id != kNoNode;
             id = NextElementSibling(nodes_, id)) {
            nodes_[id].element.positionHint = static_cast<std::uint32_t>(list.size());
            list.push_back(id);
        }
    }
    return list;
}

std::size_t ChildPositions::Locate(List& list, NodeId element)
{
    std::uint32_t& hint = nodes_[element].element.positionHint;
    const std::size_t from = hint > kHintReach ? hint - kHintReach : 0;
    const std::size_t to = std::min<std::size_t>(list.size(), std::size_t{hint} + kHintReach);
    if (hint < list.size() && list[hint] == element) {
        return hint;
    }
    for (std::size_t index = from; index < to; ++index) {
        if (list[index] == element) {
            hint = static_cast<std::uint32_t>(index);
            return index;
        }
    }
    for (std::size_t index = 0; index < list.size(); ++index) {
        nodes_[list[index]].element.positionHint = static_cast<std::uint32_t>(index);
    }
    return hint;
}

}  // namespace HtmlEngine::Internal
