// The document views of one frame of the host, in the order in which they were opened. Changes are
// made on the UI thread, and their events fired there, during the change. [ui-thread]
#pragma once

#include "services/HostObject.h"
#include "services/HostState.h"
#include "services/UIDocumentViewObject.h"
#include "ui-engine/UIDocumentsCollection.SO.h"

#include <vector>

namespace Workbench {

class UIDocumentsCollectionObject
    : public HostObject<UIDocumentsCollectionObject, UIDocumentsCollection> {
public:
    using ViewPtr = BasicServiceObjectPtr<UIDocumentViewObject>;
    using SbSViewPtr = BasicServiceObjectPtr<UIDocumentViewSbSObject>;

    explicit UIDocumentsCollectionObject(HostStatePtr state);

    const std::vector<ViewPtr>& Views() const noexcept { return views_; }

    // Empty when no view is active.
    const ViewPtr& ActiveView() const noexcept { return active_; }

    // Appends a view: created, not yet active.
    void Add(ViewPtr view);

    // Deactivates the active view, then activates this one of the collection; an empty handle
    // leaves none active. The active view again changes nothing.
    void Activate(ViewPtr view);

    // Takes a view out: deactivated if it was active, then destroyed. The view that takes its
    // place, or the last one, becomes active then. False for a view that is not in the collection.
    bool Close(ViewPtr view);

    // The side-by-side view: created and activated, or deactivated and destroyed when empty.
    void ShowSideBySide(SbSViewPtr view);

private:
    ResultCode GetActiveView(UIDocumentView** view) const;
    ResultCode EnumerateViews(UIDocumentsCollection::ViewCollector collector, void* context) const;
    ResultCode GetActiveSbSView(UIDocumentViewSbS** view) const;

    HostStatePtr state_;
    std::vector<ViewPtr> views_;
    ViewPtr active_;
    SbSViewPtr activeSideBySide_;
};

}  // namespace Workbench
