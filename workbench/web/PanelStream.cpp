#include "web/PanelStream.h"

namespace Workbench {

using HtmlEngine::ElementHandle;
using HtmlEngine::NodeHandle;

PanelStream::PanelStream(HtmlEngine::Document& panel)
    : panel_(panel), reader_(panel), changes_(reader_)
{
}

PanelStream::~PanelStream()
{
    Stop();
}

std::vector<PanelMessage> PanelStream::Snapshot()
{
    PanelWriter writer(reader_);
    writer.Reset(panel_.NodeOf(panel_.Root()));
    if (!follows_) {
        panel_.SetObserver(this);
        follows_ = true;
    }
    return writer.Take();
}

std::vector<PanelMessage> PanelStream::TakeChanges()
{
    return changes_.Take();
}

void PanelStream::Stop()
{
    if (follows_) {
        panel_.SetObserver(nullptr);
        follows_ = false;
    }
    changes_.Take();
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

void PanelStream::OnInserted(NodeHandle, NodeHandle, NodeHandle first, NodeHandle last) noexcept
{
    changes_.Insert(first, last);
}

void PanelStream::OnRemoved(NodeHandle, NodeHandle first, NodeHandle last) noexcept
{
    changes_.Remove(first, last);
}

void PanelStream::OnTextChanged(NodeHandle text) noexcept
{
    changes_.Text(text);
}

void PanelStream::OnAttributesChanged(NodeHandle element) noexcept
{
    changes_.Attributes(element);
}

void PanelStream::OnStatesChanged(NodeHandle element) noexcept
{
    changes_.States(element);
}

void PanelStream::OnPageReplaced() noexcept
{
    changes_.Reset(panel_.NodeOf(panel_.Root()));
}

}  // namespace Workbench
