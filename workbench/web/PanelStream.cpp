#include "web/PanelStream.h"

namespace Workbench {

using HtmlEngine::ElementHandle;
using HtmlEngine::NodeHandle;

PanelStream::PanelStream(HtmlEngine::Document& page)
    : page_(page), reader_(page), changes_(reader_, numbers_)
{
}

PanelStream::~PanelStream()
{
    Rest();
}

std::vector<PanelMessage> PanelStream::Snapshot()
{
    PanelWriter writer(reader_, numbers_);
    writer.Reset(page_.NodeOf(page_.Root()));
    if (!follows_) {
        page_.SetObserver(this);
        follows_ = true;
    }
    return writer.Take();
}

std::vector<PanelMessage> PanelStream::TakeChanges()
{
    return changes_.Take();
}

void PanelStream::Rest()
{
    if (follows_) {
        page_.SetObserver(nullptr);
        follows_ = false;
    }
    changes_.Take();
    numbers_.ForgetAll();
}

ElementHandle PanelStream::ElementWith(std::uint64_t number) const
{
    return page_.ElementOf(numbers_.NodeWith(number));
}

std::uint64_t PanelStream::NumberOf(ElementHandle element) const
{
    return numbers_.Of(page_.NodeOf(element));
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
    numbers_.ForgetAll();
    changes_.Reset(page_.NodeOf(page_.Root()));
}

}  // namespace Workbench
