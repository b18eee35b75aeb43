// The handler of the panel's body: keeps one comments container per document view of the host's
// documents collection, shows that of the active view, and removes it with its view. Containers
// fill themselves (CommentsContainerHandler). Methods are called on the UI thread; events arrive
// on any thread and are acted on on the UI thread.
#pragma once

#include "ui-engine/ElementAccess.h"
#include "ui-engine/UIThreadDispatcher.h"
#include "ui-engine/internal/CppUIHandlerBase.h"
#include "ui-engine/internal/DocumentViewObserverBase.h"

#include <functional>
#include <string>
#include <vector>

class CommentsPanelHandler
    : public SOImpl::CppUIHandlerBase<CommentsPanelHandler, SODetails::ServiceObjectTraits>,
      public DocumentViewObserverBase<CommentsPanelHandler> {
public:
    CommentsPanelHandler();
    ~CommentsPanelHandler();

    // --- UIHandler -----------------------------------------------------------------------------

    UIElement ElementAttachedTo() const noexcept { return root_.AsElement(); }
    std::uint32_t SubscribedEvents() const noexcept { return kEventGroupBehaviour; }
    ResultCode Attached(UIWnd& window, const UIElement& element);
    // Drops every subscription, the collection and the dispatcher. May come twice.
    ResultCode Detached();

    // --- The panel model's way in ----------------------------------------------------------------

    // Posts the change to the new collection; nothing for null or without a dispatcher. Throws
    // ServiceObjectException when the host fails to post.
    void SetDocumentsCollection(UIDocumentsCollection* collection);

    // --- Events of the host [any-thread] ---------------------------------------------------------

    void OnChildDocumentFrameCreated(UIDocumentFrame* frame);
    void OnDocumentViewCreated(UIDocumentView* view);
    void OnDocumentViewActivated(UIDocumentView* view);
    void OnDocumentViewDeactivated(UIDocumentView* view);
    void OnDocumentViewDestroyed(UIDocumentView* view);
    void OnSbSViewActivated(UIDocumentViewSbS* view);
    void OnSbSViewDeactivated(UIDocumentViewSbS* view);
    void OnSelectionChanged(BLSelection* selection);

private:
    using View = BasicServiceObjectPtr<BLDocumentView>;

    // Runs `task` on the UI thread, now or posted, with this handler kept alive; failures end it.
    // [any-thread]
    void RunOnUIThread(const char* name, std::function<void()> task);
    // As above, for a step on the view object behind an event's argument.
    void RunForView(const char* name, UIDocumentView* view,
                    void (CommentsPanelHandler::*step)(BLDocumentView*));

    void StartDispatcher();
    void AdoptCollection(UIDocumentsCollection* collection);
    void ObserveHostMainFrame();
    // Makes containers for the collection's views and shows that of the active one.
    void SynchroniseWithViews();
    void CreateContainersOf(UIDocumentsCollection* collection);

    void CreateContainer(BLDocumentView* view);
    void AttachContainerHandler(const std::string& key, BLDocumentView* view);
    void ActivateContainer(BLDocumentView* view);
    void DeactivateContainer(BLDocumentView* view);
    void DestroyContainer(BLDocumentView* view);

    ElementSet ContainersWithKey(const std::string& key) const;
    bool HasContainer(BLDocumentView* view);
    bool IsNew(const BasicServiceObjectPtr<UIDocumentsCollection>& collection) const;

    UIThreadDispatcher dispatcher_;
    ElementReference root_;
    BasicServiceObjectPtr<UIDocumentsCollection> collection_;
    WeakServiceObjectPtr<UIDocumentViewSbS> sideBySideView_;
    WeakServiceObjectPtr<BLSelection> selection_;
    // Collections of child frames that are observed besides.
    std::vector<WeakServiceObjectPtr<UIDocumentsCollection>> childCollections_;
    // The views that have a container. Two views may share a key, so that the DOM alone cannot
    // tell whether a view has one.
    std::vector<WeakServiceObjectPtr<BLDocumentView>> viewsWithContainer_;
};
