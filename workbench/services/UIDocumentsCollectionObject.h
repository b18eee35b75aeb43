// The document views of one frame of the host, in order of opening. Events are fired on the UI
// thread, during the change. [ui-thread]
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

    // Appends a view without activating it.
    void Add(ViewPtr view);

    // Deactivates the active view, then activates this one of the collection; an empty handle
    // leaves none active. No effect for the active view.
    void Activate(ViewPtr view);

    // Removes a view: fires its deactivation, if active, and its destruction. The next view, or the
    // last one, then becomes active. False for a view that is not in the collection.
    bool Close(ViewPtr view);

    // Sets the side-by-side view, fired as created and activated; empty removes it, fired as
    // deactivated and destroyed.
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
