#include "services/FrameObjects.h"

#include <utility>

namespace Workbench {

UIDocumentFrameObject::UIDocumentFrameObject(
    BasicServiceObjectPtr<UIDocumentsCollectionObject> collection)
    : collection_(std::move(collection))
{
    Offer<UIDocumentFrame::GetDocumentsCollection,
          &UIDocumentFrameObject::GetDocumentsCollection>();
}

ResultCode UIDocumentFrameObject::GetDocumentsCollection(UIDocumentsCollection** collection) const
{
    if (collection == nullptr) {
        return kResultNullArgument;
    }
    HandOut(collection_, collection);
    return kResultOk;
}

UIMainFrameObject::UIMainFrameObject(HostStatePtr state) : state_(std::move(state)) {}

void UIMainFrameObject::AnnounceChildFrame(UIDocumentFrameObject& frame)
{
    state_->Fire(Event<UIMainFrame::OnChildDocumentFrameCreated>(), frame.AsInterface());
}

}  // namespace Workbench
