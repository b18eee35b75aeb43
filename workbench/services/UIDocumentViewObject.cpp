#include "services/UIDocumentViewObject.h"

#include <utility>

namespace Workbench {

UIDocumentViewObject::UIDocumentViewObject(BasicServiceObjectPtr<BLDocumentViewObject> view)
    : view_(std::move(view))
{
    Offer<UIDocumentView::GetDocumentView, &UIDocumentViewObject::GetDocumentView>();
}

ResultCode UIDocumentViewObject::GetDocumentView(BLDocumentView** view) const
{
    if (view == nullptr) {
        return kResultNullArgument;
    }
    HandOut(view_, view);
    return kResultOk;
}

UIDocumentViewSbSObject::UIDocumentViewSbSObject(BasicServiceObjectPtr<UIDocumentViewObject> left,
                                                 BasicServiceObjectPtr<UIDocumentViewObject> right)
    : left_(std::move(left)), right_(std::move(right))
{
    Offer<UIDocumentViewSbS::GetViews, &UIDocumentViewSbSObject::GetViews>();
}

ResultCode UIDocumentViewSbSObject::GetViews(UIDocumentView** left, UIDocumentView** right) const
{
    if (left == nullptr || right == nullptr) {
        return kResultNullArgument;
    }
    HandOut(left_, left);
    HandOut(right_, right);
    return kResultOk;
}

}  // namespace Workbench
