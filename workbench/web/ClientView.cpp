#include "web/ClientView.h"

#include "driver/JsonText.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <utility>

namespace Workbench {

using HtmlEngine::kNoNodeHandle;
using HtmlEngine::NodeHandle;
using HtmlEngine::NodeKind;

namespace {

// Rows inserted in the window or at its ends are sent without being asked for, up to this number.
constexpr std::size_t kFewRows = 8;

// Size changes of so many page items are sent one by one, of more as the sizes of all.
constexpr std::size_t kFewSizes = 16;

void AppendField(std::string& json, std::uint64_t number)
{
    json += ',';
    AppendNumber(json, number);
}

}  // namespace

ClientView::ClientView(const HtmlEngine::Document& panel)
    : panel_(panel), reader_(panel), writer_(reader_, *this)
{
}

void ClientView::Reset()
{
    held_.clear();
    splice_ = {};
    resized_.clear();
    writer_.Reset(panel_.NodeOf(panel_.Root()));
}

std::vector<PanelMessage> ClientView::Take()
{
    WriteSplice();
    WriteSizes();
    return writer_.Take();
}

// --- What the client has ---

bool ClientView::IsHeld(NodeHandle element) const
{
    return ListPartOf(reader_, element) != ListPart::kNone;
}

void ClientView::Describe(NodeHandle element, std::string& out)
{
    const ListPart part = ListPartOf(reader_, element);
    held_[element] = {part, 0, {}};
    if (part == ListPart::kTooltip) {
        out += "null";
        return;
    }
    const std::size_t count = CountChildren(element);
    if (part == ListPart::kItems) {
        out += "{\"items\":";
        AppendNumber(out, count);
    } else {
        out += "{\"pages\":";
        AppendSizes(element, 0, count, out);
    }
    out += '}';
}

// Whether the client has the node.
bool ClientView::IsSent(NodeHandle node) const
{
    const NodeHandle root = panel_.NodeOf(panel_.Root());
    while (node != root) {
        const NodeHandle parent = reader_.Parent(node);
        if (parent == kNoNodeHandle) {
            return false;
        }
        const auto held = held_.find(parent);
        if (held != held_.end() && !std::ranges::count(held->second.shown, node)) {
            return false;
        }
        node = parent;
    }
    return true;
}

std::size_t ClientView::CountChildren(NodeHandle list) const
{
    return panel_.ChildCount(panel_.ElementOf(list));
}

NodeHandle ClientView::ChildAt(NodeHandle list, std::size_t index) const
{
    return panel_.NodeOf(panel_.Child(panel_.ElementOf(list), index));
}

std::size_t ClientView::IndexOf(NodeHandle child) const
{
    return panel_.IndexInParent(panel_.ElementOf(child));
}

// Position among the elements of what follows a node.
std::size_t ClientView::IndexBehind(NodeHandle previous) const
{
    while (previous != kNoNodeHandle && reader_.Kind(previous) != NodeKind::Element) {
        previous = reader_.PreviousSibling(previous);
    }
    return previous == kNoNodeHandle ? 0 : IndexOf(previous) + 1;
}

// The number of items of each page item, for a collapsed one -1 less that number.
void ClientView::AppendSizes(NodeHandle list, std::size_t from, std::size_t count,
                             std::string& out) const
{
    out += '[';
    NodeHandle page = count == 0 ? kNoNodeHandle : ChildAt(list, from);
    for (std::size_t i = 0; i < count; page = reader_.NextSibling(page)) {
        if (reader_.Kind(page) != NodeKind::Element) {
            continue;
        }
        out += i == 0 ? "" : ",";
        const NodeHandle items = ItemsOf(reader_, page);
        const std::size_t size = items == kNoNodeHandle ? 0 : CountChildren(items);
        const bool isFolded = IsFolded(reader_, page);
        out += isFolded ? "-" : "";
        AppendNumber(out, size + (isFolded ? 1 : 0));
        ++i;
    }
    out += ']';
}

// --- Changes of the tree ---

// Prepares the messages for a change of an element's children.
ClientView::Target ClientView::TargetOf(NodeHandle parent)
{
    if (!IsSent(parent)) {
        NoteSize(parent);
        return Target::kNone;
    }
    const auto held = held_.find(parent);
    if (held == held_.end()) {
        WriteSplice();
        return Target::kTree;
    }
    return held->second.part == ListPart::kTooltip ? Target::kNone : Target::kRows;
}

std::vector<NodeHandle> ClientView::ElementsBetween(NodeHandle first, NodeHandle last) const
{
    std::vector<NodeHandle> elements;
    const NodeHandle end = reader_.NextSibling(last);
    for (NodeHandle node = first; node != end; node = reader_.NextSibling(node)) {
        if (reader_.Kind(node) == NodeKind::Element) {
            elements.push_back(node);
        }
    }
    return elements;
}

void ClientView::Inserted(NodeHandle parent, NodeHandle first, NodeHandle last)
{
    const Target target = TargetOf(parent);
    if (target == Target::kTree) {
        writer_.Insert(first, last);
    } else if (target == Target::kRows) {
        if (const auto rows = ElementsBetween(first, last); !rows.empty()) {
            InsertRows(parent, rows);
        }
    }
}

void ClientView::Removed(NodeHandle parent, NodeHandle previous, NodeHandle first, NodeHandle last)
{
    const Target target = TargetOf(parent);
    if (target == Target::kTree) {
        writer_.Remove(first, last);
        ForgetUnsent();
    } else if (target == Target::kRows) {
        if (const auto rows = ElementsBetween(first, last); !rows.empty()) {
            RemoveRows(parent, IndexBehind(previous), rows.size());
        }
    }
}

void ClientView::TextChanged(NodeHandle text)
{
    if (IsSent(text)) {
        WriteSplice();
        writer_.Text(text);
    }
}

void ClientView::AttributesChanged(NodeHandle element)
{
    if (IsSent(element)) {
        WriteSplice();
        writer_.Attributes(element);
    }
}

void ClientView::StatesChanged(NodeHandle element)
{
    if (IsSent(element)) {
        WriteSplice();
        writer_.States(element);
    } else {
        NoteSize(element);
    }
}

// --- Lists ---

void ClientView::InsertRows(NodeHandle list, const std::vector<NodeHandle>& rows)
{
    const std::size_t at = IndexOf(rows.front());
    NoteSplice(list, at, 0, rows.size());
    Held& held = held_.at(list);
    const std::size_t to = held.from + held.shown.size();
    const bool isInWindow = !held.shown.empty() && held.from <= at && at <= to;
    if (isInWindow && rows.size() <= kFewRows && held.shown.size() < kMostRows) {
        ShowInserted(list, at, rows);
    } else if (at <= held.from) {
        held.from += rows.size();
    } else if (at < to) {
        held.shown.resize(at - held.from);
        ForgetUnsent();
    }
}

// The window grows by the new rows. A page item that takes another one's place keeps its window.
void ClientView::ShowInserted(NodeHandle list, std::size_t at, const std::vector<NodeHandle>& rows)
{
    Held& held = held_.at(list);
    const auto place = held.shown.begin() + static_cast<std::ptrdiff_t>(at - held.from);
    const NodeHandle previous = place == held.shown.begin() ? kNoNodeHandle : *std::prev(place);
    held.shown.insert(place, rows.begin(), rows.end());
    WriteSplice();
    writer_.InsertHeld(rows, previous);
    if (held_.at(list).part != ListPart::kPages) {
        return;
    }
    for (const NodeHandle row : rows) {
        const NodeHandle items = ItemsOf(reader_, row);
        if (!held_.contains(items)) {
            continue;
        }
        const NodeHandle former = Predecessor(held_.at(list), at, rows.size(), row);
        const auto window = held_.find(ItemsOf(reader_, former));
        if (window != held_.end()) {
            SetWindow(items, window->second.from,
                      window->second.from + window->second.shown.size());
        }
    }
}

// The page item beside new rows whose place one of them is to take; kNoNodeHandle when there is
// none.
NodeHandle ClientView::Predecessor(const Held& held, std::size_t at, std::size_t count,
                                   NodeHandle row) const
{
    const auto pageOf = [&](NodeHandle page) {
        return panel_.Attribute(panel_.ElementOf(page), "page-item").value_or("");
    };
    const auto begin = static_cast<std::ptrdiff_t>(at - held.from);
    for (const std::ptrdiff_t beside : {begin - 1, begin + static_cast<std::ptrdiff_t>(count)}) {
        const bool isShown = beside >= 0 && beside < static_cast<std::ptrdiff_t>(held.shown.size());
        if (isShown && pageOf(held.shown[static_cast<std::size_t>(beside)]) == pageOf(row)) {
            return held.shown[static_cast<std::size_t>(beside)];
        }
    }
    return kNoNodeHandle;
}

void ClientView::RemoveRows(NodeHandle list, std::size_t at, std::size_t count)
{
    NoteSplice(list, at, count, 0);
    Held& held = held_.at(list);
    const std::size_t to = held.from + held.shown.size();
    const std::size_t first = std::clamp(at, held.from, to) - held.from;
    const std::size_t last = std::clamp(at + count, held.from, to) - held.from;
    held.shown.erase(held.shown.begin() + static_cast<std::ptrdiff_t>(first),
                     held.shown.begin() + static_cast<std::ptrdiff_t>(last));
    held.from -= at < held.from ? std::min(count, held.from - at) : 0;
    if (first < last) {
        ForgetUnsent();
    }
}

// Removals at one place are written as one.
void ClientView::NoteSplice(NodeHandle list, std::size_t at, std::size_t removed,
                            std::size_t inserted)
{
    const bool isSame = splice_.list == list;
    if (isSame && splice_.inserted == 0 && inserted == 0 &&
        (at == splice_.at || at + removed == splice_.at)) {
        splice_.at = at;
        splice_.removed += removed;
        return;
    }
    WriteSplice();
    splice_ = {list, at, removed, inserted, {}};
    if (held_.at(list).part == ListPart::kPages) {
        AppendSizes(list, at, inserted, splice_.sizes);
    }
}

void ClientView::WriteSplice()
{
    const Splice splice = std::exchange(splice_, {});
    const auto held = held_.find(splice.list);
    if (held == held_.end()) {
        return;  // none, or its list was removed meanwhile
    }
    std::string change = "[\"w\"";
    AppendField(change, IdOf(splice.list));
    AppendField(change, held->second.from);
    AppendField(change, held->second.from + held->second.shown.size());
    AppendField(change, splice.at);
    AppendField(change, splice.removed);
    if (held->second.part == ListPart::kPages) {
        change += ',' + splice.sizes;
    } else {
        AppendField(change, splice.inserted);
    }
    writer_.Change(change + ']');
}

void ClientView::MoveWindow(std::uint64_t list, Place from, Place to)
{
    const NodeHandle pages = NodeWith(list);
    const auto held = held_.find(pages);
    if (held == held_.end() || held->second.part != ListPart::kPages) {
        return;
    }
    WriteSplice();
    const std::size_t count = CountChildren(pages);
    const std::size_t end = std::min({to.page + 1, count, from.page + kMostRows});
    SetWindow(pages, std::min(from.page, end), end);
    std::size_t rows = kMostRows;
    const std::vector<NodeHandle> shown = held_.at(pages).shown;
    for (std::size_t i = 0; i < shown.size(); ++i) {
        const NodeHandle items = ItemsOf(reader_, shown[i]);
        if (!held_.contains(items)) {
            continue;
        }
        const std::size_t all = IsFolded(reader_, shown[i]) ? 0 : CountChildren(items);
        const std::size_t first = i == 0 ? std::min(from.item, all) : 0;
        const std::size_t wanted = from.page + i == to.page ? std::min(to.item, all) : all;
        const std::size_t last = std::clamp(wanted, first, first + rows);
        SetWindow(items, first, last);
        rows -= last - first;
    }
}

void ClientView::SetWindow(NodeHandle list, std::size_t from, std::size_t to)
{
    Held& held = held_.at(list);
    to = std::min(to, CountChildren(list));
    from = std::min(from, to);
    const std::size_t formerTo = held.from + held.shown.size();
    const std::size_t keptFrom = std::clamp(held.from, from, to);
    const std::size_t keptTo = std::clamp(formerTo, keptFrom, to);
    std::vector<NodeHandle> rows;
    for (std::size_t i = from; i < to; ++i) {
        rows.push_back(ChildAt(list, i));
    }
    const bool isSame = held.from == from && held.shown == rows;
    held.from = from;
    held.shown = rows;
    if (isSame && held.part != ListPart::kPages) {
        return;
    }
    std::string change = "[\"w\"";
    AppendField(change, IdOf(list));
    AppendField(change, from);
    AppendField(change, to);
    writer_.Change(change + ']');
    ForgetUnsent();
    const std::span<const NodeHandle> all = rows;
    const auto before = all.first(keptFrom - from);
    const auto behind = all.subspan(std::max(keptTo, keptFrom) - from);
    writer_.InsertHeld(before, kNoNodeHandle);
    writer_.InsertHeld(behind, behind.size() == all.size() ? kNoNodeHandle
                                                           : all[all.size() - behind.size() - 1]);
}

void ClientView::OpenTooltip(std::uint64_t tooltip)
{
    const NodeHandle node = NodeWith(tooltip);
    const auto held = held_.find(node);
    if (held == held_.end() || held->second.part != ListPart::kTooltip) {
        return;
    }
    WriteSplice();
    held_.erase(held);
    if (reader_.FirstChild(node) != kNoNodeHandle) {
        writer_.Insert(reader_.FirstChild(node), reader_.LastChild(node));
    }
}

// Forgets the parts of elements that the client does not have any more.
void ClientView::ForgetUnsent()
{
    std::erase_if(held_, [this](const auto& entry) { return !IsSent(entry.first); });
}

// The size of a page item outside the window may have changed.
void ClientView::NoteSize(NodeHandle node)
{
    for (NodeHandle parent = reader_.Parent(node); parent != kNoNodeHandle;
         node = parent, parent = reader_.Parent(node)) {
        const auto held = held_.find(parent);
        if (held != held_.end()) {
            if (held->second.part == ListPart::kPages &&
                !std::ranges::count(held->second.shown, node)) {
                resized_.insert(node);
            }
            return;
        }
    }
}

void ClientView::WriteSizes()
{
    std::unordered_map<NodeHandle, std::vector<NodeHandle>> lists;
    for (const NodeHandle page : std::exchange(resized_, {})) {
        const NodeHandle list = reader_.Parent(page);
        if (held_.contains(list)) {
            lists[list].push_back(page);
        }
    }
    const auto write = [&](NodeHandle list, std::size_t from, std::size_t count) {
        std::string change = "[\"z\"";
        AppendField(change, IdOf(list));
        AppendField(change, from);
        change += ',';
        AppendSizes(list, from, count, change);
        writer_.Change(change + ']');
    };
    for (const auto& [list, pages] : lists) {
        if (pages.size() > kFewSizes) {
            write(list, 0, CountChildren(list));
            continue;
        }
        for (const NodeHandle page : pages) {
            write(list, IndexOf(page), 1);
        }
    }
}

}  // namespace Workbench
