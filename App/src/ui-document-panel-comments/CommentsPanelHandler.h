// The handler of the panel's body: keeps one comments container per document view of the host's
// documents collection and of its child frames' collections, shows that of the active view, and
// removes it with its view. Containers fill themselves (CommentsContainerHandler). Methods are
// called on the UI thread; events arrive on any thread and are acted on on the UI thread.
#pragma once

#include "ui-engine/ElementAccess.h"
#include "ui-engine/UIThreadDispatcher.h"
#include "ui-engine/internal/CppUIHandlerBase.h"
#include "ui-engine/internal/DocumentViewObserverBase.h"

#include <atomic>
#include <functional>
#include <memory>
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
    // Drops every subscription, the collection and the dispatcher; child frames are remembered for
    // another attachment, as the host announces them once. May come twice.
    ResultCode Detached();

    // --- The panel model's way in ----------------------------------------------------------------

    // Posts the change to the new collection, or to the same one anew; nothing for null or when
    // detached. Throws ServiceObjectException when the host fails to post. What could not be posted
    // is kept until the next chance.
    void SetDocumentsCollection(UIDocumentsCollection* collection);

    // --- Events of the host [any-thread] ---------------------------------------------------------

    void OnChildDocumentFrameCreated(UIDocumentFrame* frame);
    void OnDocumentViewCreated(Source source, UIDocumentView* view);
    void OnDocumentViewActivated(Source source, UIDocumentView* view);
    void OnDocumentViewDeactivated(Source source, UIDocumentView* view);
    void OnDocumentViewDestroyed(Source source, UIDocumentView* view);
    void OnSbSViewActivated(Source source, UIDocumentViewSbS* view);
    void OnSbSViewDeactivated(Source source, UIDocumentViewSbS* view);
    void OnSelectionChanged(BLSelection* selection);

private:
    using View = BasicServiceObjectPtr<BLDocumentView>;

    using Collection = BasicServiceObjectPtr<UIDocumentsCollection>;

    // State of the task that attaches a container's own handler.
    enum class Attaching { kNotPosted, kPosted, kDone };
    static constexpr unsigned kAttachingTries = 3;  // in a row; more with later events

    // The container of one view. Two views may share a key, so that the DOM alone cannot tell
    // whether a view has one.
    struct Container {
        WeakServiceObjectPtr<BLDocumentView> view;
        std::string key;
        Source source;  // the collection that the view was last seen in
        Attaching attaching = Attaching::kNotPosted;
        unsigned failedTries = 0;  // of attaching its handler
    };

    // Runs `task` on the UI thread, now or posted after what is waiting, with this handler kept
    // alive while it runs; failures end it. A dying handler runs nothing. What fails is made good
    // with the next task (CatchUp). [any-thread]
    template <class Task>
    void RunOnUIThread(const char* name, Task task) noexcept;
    // As above, on the UI thread and with the handler held by the caller. Whether it succeeded.
    bool RunTask(const char* name, const std::function<void()>& task);
    // As above, for a step on the view object behind an event's argument, while the collection that
    // the event came from is observed.
    template <class Step>
    void RunForView(const char* name, Source source, UIDocumentView* view, Step step) noexcept;

    // Catches up on what could not be done before: a missing thread object, tasks that were not
    // taken, and events whose tasks failed.
    void CatchUp();
    // Only called while the handler is held.
    void PostPendingCollection();

    void AdoptCollection(UIDocumentsCollection* collection);
    void ObserveHostMainFrame();
    // Makes containers for the views of all collections and shows that of the active one.
    void SynchroniseWithViews();
    // Makes missing containers and removes those without a view. A step that fails leaves the
    // others standing.
    void SynchroniseContainers();
    void ShowActiveView(const Collection& collection);
    void CreateContainersOf(UIDocumentsCollection* collection);
    // A container is forlorn when its view died or its collection is not observed any more.
    bool IsForlorn(const Container& container) const;
    // Removes forlorn containers; one whose view another observed collection has too is that one's.
    void RemoveForlornContainers();
    // Removes the containers with a key, unless one of them is not forlorn.
    void RemoveIfForlorn(const std::string& key);
    // Removes what an earlier attachment left in the element.
    void RemoveStrayContainers();

    void ObserveFrame(UIDocumentFrame* frame);
    void CreateContainer(BLDocumentView* view, Source source);
    void PostAttaching(BLDocumentView* view);
    void AttachContainerHandler(BLDocumentView* view);
    void NoteAttaching(BLDocumentView* view, Attaching attaching);
    void ActivateContainer(BLDocumentView* view, Source source);
    void DeactivateContainer(BLDocumentView* view);
    void DestroyContainer(BLDocumentView* view);
    void RemoveContainers(const std::string& key);
    // Of a view whose container is not in the tree.
    void ForgetContainer(BLDocumentView* view);

    // Calls `step` for every container, not for what looks like one inside a comment. A failure
    // ends the step alone.
    void ForEachContainer(const std::function<void(const ElementReference&)>& step) const;
    ElementSet ContainersWithKey(const std::string& key) const;
    // Null when the view has no container.
    Container* ContainerOf(BLDocumentView* view);
    // Whether a collection is observed and has the view.
    bool Has(Source source, BLDocumentView* view) const;
    bool IsOfChildFrame(const Collection& collection) const;
    std::vector<Collection> ChildCollections() const;

    UIThreadDispatcher dispatcher_;
    // Held by every posted event that waits.
    const std::shared_ptr<const char> waiting_ = std::make_shared<const char>('\0');
    std::atomic<bool> eventMissed_ = false;  // an event's task failed or could not be posted
    bool isDetached_ = false;                // was attached, and is not any more
    ElementReference root_;
    Collection collection_;
    Collection pending_;                                      // handed over, and not posted yet
    WeakServiceObjectPtr<UIDocumentsCollection> handedOver_;  // last
    Source shownFor_ = 0;  // the collection whose active view was shown last
    // What is still to be done where the host failed.
    std::vector<WeakServiceObjectPtr<UIDocumentFrame>> framesToObserve_;
    WeakServiceObjectPtr<UIDocumentViewSbS> sideBySideView_;
    WeakServiceObjectPtr<BLSelection> selection_;
    // Collections of child frames, which may be the same as `collection_`.
    std::vector<WeakServiceObjectPtr<UIDocumentsCollection>> childCollections_;
    std::vector<Container> containers_;
};
