// The host's frames: the main frame, and child frames with documents of their own.
#pragma once

#include "services/HostObject.h"
#include "services/UIDocumentsCollectionObject.h"
#include "ui-engine/UIMainFrame.SO.h"

namespace Workbench {

class UIDocumentFrameObject : public HostObject<UIDocumentFrameObject, UIDocumentFrame> {
public:
    explicit UIDocumentFrameObject(BasicServiceObjectPtr<UIDocumentsCollectionObject> collection);

    UIDocumentsCollectionObject& Collection() const noexcept { return *collection_.Get(); }

private:
    ResultCode GetDocumentsCollection(UIDocumentsCollection** collection) const;

    BasicServiceObjectPtr<UIDocumentsCollectionObject> collection_;
};

class UIMainFrameObject : public HostObject<UIMainFrameObject, UIMainFrame> {
public:
    explicit UIMainFrameObject(HostStatePtr state);

    // Fires the event for a new child frame. [any-thread]
    void AnnounceChildFrame(UIDocumentFrameObject& frame);

private:
    HostStatePtr state_;
};

}  // namespace Workbench
