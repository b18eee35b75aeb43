// The host's user-interface document views: single views and the side-by-side view.
#pragma once

#include "services/BLDocumentViewObject.h"
#include "services/HostObject.h"
#include "ui-engine/UIDocumentView.SO.h"

namespace Workbench {

class UIDocumentViewObject : public HostObject<UIDocumentViewObject, UIDocumentView> {
public:
    explicit UIDocumentViewObject(BasicServiceObjectPtr<BLDocumentViewObject> view);

    BLDocumentViewObject& View() const noexcept { return *view_.Get(); }

private:
    ResultCode GetDocumentView(BLDocumentView** view) const;

    BasicServiceObjectPtr<BLDocumentViewObject> view_;
};

class UIDocumentViewSbSObject : public HostObject<UIDocumentViewSbSObject, UIDocumentViewSbS> {
public:
    // An empty handle leaves that side empty.
    UIDocumentViewSbSObject(BasicServiceObjectPtr<UIDocumentViewObject> left,
                            BasicServiceObjectPtr<UIDocumentViewObject> right);

private:
    ResultCode GetViews(UIDocumentView** left, UIDocumentView** right) const;

    BasicServiceObjectPtr<UIDocumentViewObject> left_;
    BasicServiceObjectPtr<UIDocumentViewObject> right_;
};

}  // namespace Workbench
