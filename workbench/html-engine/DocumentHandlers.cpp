// Attached handlers of a Document's elements.

#include "html-engine/Document.h"
#include "html-engine/internal/DocumentParts.h"

#include <algorithm>
#include <utility>

namespace HtmlEngine {

using namespace Internal;

void Document::Parts::Remove(NodeRun run, std::vector<HandlerOnPath>& ended)
{
    std::vector<LeftElement> left;
    tree.Remove(run, left);
    for (const LeftElement& element : left) {
        auto node = handlers.extract(element.id);
        for (std::shared_ptr<AttachedHandler>& handler : node.mapped()) {
            ended.push_back({element.handle, std::move(handler)});
        }
    }
}

void Document::Parts::NotifyDetached(const std::vector<HandlerOnPath>& ended)
{
    for (const HandlerOnPath& attachment : ended) {
        attachment.handler->OnDetached(attachment.element);
    }
}

NodeId Document::Parts::HandlerElementAbove(NodeId id) const
{
    do {
        id = tree.Nodes()[id].parent;
    } while (id != kNoNode && !tree.Nodes()[id].Is(NodeFlag::kHasHandlers));
    return id;
}

Result Document::AttachHandler(ElementHandle element, std::shared_ptr<AttachedHandler> handler)
{
    const NodeId id = parts_->Resolve(element);
    if (id == kNoNode) {
        return Result::UnknownElement;
    }
    if (!parts_->At(id).Is(NodeFlag::kAttached)) {
        return Result::NoPlace;
    }
    std::vector<std::shared_ptr<AttachedHandler>>& here = parts_->handlers[id];
    if (handler == nullptr || std::find(here.begin(), here.end(), handler) != here.end()) {
        if (here.empty()) {
            parts_->handlers.erase(id);
        }
        return Result::HandlerRefused;
    }
    here.push_back(std::move(handler));
    parts_->At(id).flags |= NodeFlag::kHasHandlers;
    return Result::Success;
}

Result Document::DetachHandler(ElementHandle element, const AttachedHandler* handler)
{
    const NodeId id = parts_->Resolve(element);
    if (id == kNoNode) {
        return Result::UnknownElement;
    }
    const auto found = parts_->handlers.find(id);
    if (found == parts_->handlers.end()) {
        return Result::NotHeld;
    }
    std::vector<std::shared_ptr<AttachedHandler>>& here = found->second;
    const auto place = std::find_if(here.begin(), here.end(),
                                    [&](const auto& held) { return held.get() == handler; });
    if (place == here.end()) {
        return Result::NotHeld;
    }
    const std::shared_ptr<AttachedHandler> ended = std::move(*place);
    here.erase(place);
    if (here.empty()) {
        parts_->handlers.erase(found);
        parts_->At(id).flags &= static_cast<std::uint8_t>(~NodeFlag::kHasHandlers);
    }
    ended->OnDetached(element);
    return Result::Success;
}

std::vector<HandlerOnPath> Document::HandlersOf(ElementHandle element) const
{
    std::vector<HandlerOnPath> path;
    for (NodeId id = parts_->Resolve(element); id != kNoNode; id = parts_->At(id).parent) {
        if (parts_->At(id).Is(NodeFlag::kHasHandlers)) {
            for (const std::shared_ptr<AttachedHandler>& handler : parts_->handlers.at(id)) {
                path.push_back({parts_->HandleOf(id), handler});
            }
        }
    }
    return path;
}

}  // namespace HtmlEngine
