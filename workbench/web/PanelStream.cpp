#include "web/PanelStream.h"

namespace Workbench {

using HtmlEngine::ElementHandle;
using HtmlEngine::NodeHandle;

PanelStream::PanelStream(HtmlEngine::Document& panel) : panel_(panel), reader_(panel) {}

PanelStream::~PanelStream()
{
    if (!views_.empty()) {
        panel_.SetObserver(nullptr);
    }
}

void PanelStream::Connect(SocketNumber client)
{
    if (views_.empty()) {
        panel_.SetObserver(this);
    }
    views_.try_emplace(client, panel_).first->second.Reset();
}

void PanelStream::Disconnect(SocketNumber client)
{
    if (views_.erase(client) > 0 && views_.empty()) {
        panel_.SetObserver(nullptr);
    }
}

std::vector<PanelMessage> PanelStream::TakeMessages(SocketNumber client)
{
    return views_.at(client).Take();
}

// Ids of clients are valid for elements in the tree only; a handle may name a detached element.
ElementHandle PanelStream::ElementWith(std::uint64_t id) const
{
    const NodeHandle root = panel_.NodeOf(panel_.Root());
    NodeHandle top = NodeWith(id);
    while (top != HtmlEngine::kNoNodeHandle && top != root) {
        top = reader_.Parent(top);
    }
    return top == root ? panel_.ElementOf(NodeWith(id)) : HtmlEngine::kNoElement;
}

template <class Record>
void PanelStream::Note(const Record& record)
{
    hasChanged_ = true;
    for (auto& [client, view] : views_) {
        record(view);
    }
}

void PanelStream::OnInserted(NodeHandle parent, NodeHandle, NodeHandle first,
                             NodeHandle last) noexcept
{
    Note([&](ClientView& view) { view.Inserted(parent, first, last); });
}

void PanelStream::OnRemoved(NodeHandle parent, NodeHandle previous, NodeHandle first,
                            NodeHandle last) noexcept
{
    Note([&](ClientView& view) { view.Removed(parent, previous, first, last); });
}

void PanelStream::OnTextChanged(NodeHandle text) noexcept
{
    Note([&](ClientView& view) { view.TextChanged(text); });
}

void PanelStream::OnAttributesChanged(NodeHandle element) noexcept
{
    Note([&](ClientView& view) { view.AttributesChanged(element); });
}

void PanelStream::OnStatesChanged(NodeHandle element) noexcept
{
    Note([&](ClientView& view) { view.StatesChanged(element); });
}

void PanelStream::OnPageReplaced() noexcept
{
    Note([](ClientView& view) { view.Reset(); });
}

}  // namespace Workbench
