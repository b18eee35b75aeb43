#include "services/UIDocumentsCollectionObject.h"

#include <algorithm>
#include <utility>

namespace Workbench {

UIDocumentsCollectionObject::UIDocumentsCollectionObject(HostStatePtr state)
    : state_(std::move(state))
{
    Offer<UIDocumentsCollection::GetActiveView, &UIDocumentsCollectionObject::GetActiveView>();
    Offer<UIDocumentsCollection::EnumerateViews, &UIDocumentsCollectionObject::EnumerateViews>();
    Offer<UIDocumentsCollection::GetActiveSbSView,
          &UIDocumentsCollectionObject::GetActiveSbSView>();
}

void UIDocumentsCollectionObject::Add(ViewPtr view)
{
    views_.push_back(view);
    state_->Fire(Event<UIDocumentsCollection::OnDocumentViewCreated>(), view->AsInterface());
}

void UIDocumentsCollectionObject::Activate(ViewPtr view)
{
    if (active_ == view) {
        return;
    }
    if (const ViewPtr former = std::exchange(active_, nullptr)) {
        state_->Fire(Event<UIDocumentsCollection::OnDocumentViewDeactivated>(),
                     former->AsInterface());
    }
    if (view) {
        active_ = view;
        state_->Fire(Event<UIDocumentsCollection::OnDocumentViewActivated>(), view->AsInterface());
    }
}

bool UIDocumentsCollectionObject::Close(ViewPtr view)
{
    const auto found = std::find(views_.begin(), views_.end(), view);
    if (found == views_.end()) {
        return false;
    }
    const auto place = static_cast<std::size_t>(found - views_.begin());
    const bool wasActive = active_ == view;
    if (wasActive) {
        Activate(nullptr);
    }
    views_.erase(views_.begin() + static_cast<std::ptrdiff_t>(place));
    state_->Fire(Event<UIDocumentsCollection::OnDocumentViewDestroyed>(), view->AsInterface());
    if (wasActive && !views_.empty()) {
        Activate(views_[std::min(place, views_.size() - 1)]);
    }
    return true;
}

void UIDocumentsCollectionObject::ShowSideBySide(SbSViewPtr view)
{
    if (const SbSViewPtr former = std::exchange(activeSideBySide_, nullptr)) {
        state_->Fire(Event<UIDocumentsCollection::OnSbSViewDeactivated>(), former->AsInterface());
        state_->Fire(Event<UIDocumentsCollection::OnSbSViewDestroyed>(), former->AsInterface());
    }
    if (view) {
        state_->Fire(Event<UIDocumentsCollection::OnSbSViewCreated>(), view->AsInterface());
        activeSideBySide_ = view;
        state_->Fire(Event<UIDocumentsCollection::OnSbSViewActivated>(), view->AsInterface());
    }
}

ResultCode UIDocumentsCollectionObject::GetActiveView(UIDocumentView** view) const
{
    if (view == nullptr) {
        return kResultNullArgument;
    }
    HandOut(active_, view);
    return kResultOk;
}

ResultCode
UIDocumentsCollectionObject::EnumerateViews(UIDocumentsCollection::ViewCollector collector,
                                            void* context) const
{
    if (collector == nullptr) {
        return kResultNullArgument;
    }
    const std::vector<ViewPtr> views = views_;  // the collector may lead to a change
    for (const ViewPtr& view : views) {
        const OnSide module(Side::kModule);
        collector(context, view->AsInterface());
    }
    return kResultOk;
}

ResultCode UIDocumentsCollectionObject::GetActiveSbSView(UIDocumentViewSbS** view) const
{
    if (view == nullptr) {
        return kResultNullArgument;
    }
    HandOut(activeSideBySide_, view);
    return kResultOk;
}

}  // namespace Workbench
