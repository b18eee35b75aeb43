#include "CommentsPanelHandler.h"

#include "CommentsContainerHandler.h"

#include "service-common/ServiceProvider.h"
#include "service-common/WideText.h"
#include "ui-engine/LocalizedStrings.h"
#include "ui-engine/UIService.SO.h"
#include "ui-engine/internal/EventTask.h"
#include "ui-engine/internal/TemplatesPreprocessor.h"
#include "ui-engine/internal/UIWndServiceObjectRequester.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <utility>

namespace {

constexpr const wchar_t* kContainerTemplate =
    L"document-panel-comments/template-comments-container.htm";
constexpr const char* kAllContainers = ".panel-content[doc-view-addr]";

// The container key of a view object: the low 32 bits of its address as a signed number. Host and
// template use the same text.
std::string ContainerKey(const BLDocumentView* view)
{
    const auto address = reinterpret_cast<std::uintptr_t>(view);
    return std::to_string(static_cast<std::int32_t>(static_cast<std::uint32_t>(address)));
}

[[noreturn]] void Fail(const char* function, std::uint32_t line)
{
    throw ServiceObjectException({kResultNotInitialized, L"Not initialized", function,
                                  "src/ui-document-panel-comments/CommentsPanelHandler", line});
}

// Empty when the view has none; fails when the host cannot tell.
BasicServiceObjectPtr<BLDocumentView> ViewObject(UIDocumentView* view)
{
    const std::uint64_t failedBefore = FailedCallCount();
    BasicServiceObjectPtr<BLDocumentView> object;
    CallMethod<UIDocumentView::GetDocumentView>(view, object.Receive());
    if (!object && FailedCallCount() != failedBefore) {
        Fail("CommentsPanelHandler::ViewObject", __LINE__);
    }
    return object;
}

// The view objects of a collection, in its order; without those that it fails to hand out.
std::vector<BasicServiceObjectPtr<BLDocumentView>> ViewObjectsOf(UIDocumentsCollection* collection)
{
    struct Collected {
        std::vector<BasicServiceObjectPtr<UIDocumentView>> views;
        bool failed = false;  // not all could be kept
    };
    Collected collected;
    const auto collect = [](void* context, UIDocumentView* view) {
        auto& target = *static_cast<Collected*>(context);
        try {
            target.views.push_back(BasicServiceObjectPtr<UIDocumentView>::Retain(view));
        } catch (const std::exception&) {  // nothing is thrown through the host
            target.failed = true;
        }
    };
    CallMethod<UIDocumentsCollection::EnumerateViews>(collection, collect,
                                                      static_cast<void*>(&collected));
    if (collected.failed) {
        throw std::bad_alloc();
    }
    std::vector<BasicServiceObjectPtr<BLDocumentView>> objects;
    for (const auto& view : collected.views) {
        SODetails::RunEventTask("CommentsPanelHandler::ViewObjectsOf", [&] {
            if (auto object = ViewObject(view.Get())) {
                objects.push_back(std::move(object));
            }
        });
    }
    return objects;
}

}  // namespace

CommentsPanelHandler::CommentsPanelHandler()
{
    try {
        dispatcher_.Start();
    } catch (const ServiceObjectException&) {
        // A host without its UI service yet: tried again when it is needed.
    }
}

CommentsPanelHandler::~CommentsPanelHandler()
{
    Detached();
}

ResultCode CommentsPanelHandler::Attached(UIWnd& window, const UIElement& element)
{
    root_ = ElementReference(element, WeakServiceObjectPtr<UIWnd>(&window));
    if (!root_) {
        return kResultNotInitialized;
    }
    isDetached_ = false;
    containers_.clear();
    SODetails::RunEventTask("CommentsPanelHandler::Attached",
                            [this] { dispatcher_.EnsureStarted(); });
    SODetails::RunEventTask("CommentsPanelHandler::Attached", [this] { PostPendingCollection(); });
    // Of collections that came before the panel had its element.
    SODetails::RunEventTask("CommentsPanelHandler::Attached", [this] { SynchroniseWithViews(); });
    return kResultOk;
}

ResultCode CommentsPanelHandler::Detached()
{
    DropSubscriptions();
    sideBySideView_.Reset();
    selection_.Reset();
    root_ = {};
    collection_.Reset();
    pending_.Reset();
    framesToObserve_.clear();
    eventMissed_ = false;
    shownFor_ = 0;
    containers_.clear();
    dispatcher_.Detach();
    isDetached_ = true;
    return kResultOk;
}

void CommentsPanelHandler::SetDocumentsCollection(UIDocumentsCollection* collection)
{
    if (collection == nullptr || isDetached_) {
        return;
    }
    pending_ = Collection::Retain(collection);
    handedOver_ = WeakServiceObjectPtr<UIDocumentsCollection>(collection);
    dispatcher_.EnsureStarted();
    PostPendingCollection();
}

void CommentsPanelHandler::PostPendingCollection()
{
    if (!pending_) {
        return;
    }
    // Not pending any more while it is posted: a host may run the task at once.
    const auto collection = std::exchange(pending_, nullptr);
    const auto adopt = [self = BasicServiceObjectPtr<CommentsPanelHandler>::Retain(this),
                        held = collection] {
        const bool adopted = self->RunTask("CommentsPanelHandler::SetDocumentsCollection",
                                           [&] { self->AdoptCollection(held.Get()); });
        const bool isLatest = self->handedOver_.Lock() == held;
        if (!adopted && isLatest && !self->pending_ && !self->isDetached_) {
            self->pending_ = held;
        }
    };
    try {
        if (!dispatcher_.Post(adopt)) {
            pending_ = collection;
        }
    } catch (...) {
        pending_ = collection;
        throw;
    }
}

void CommentsPanelHandler::CatchUp()
{
    constexpr const char* kName = "CommentsPanelHandler::CatchUp";
    if (eventMissed_.exchange(false)) {
        SynchroniseContainers();
        for (const auto& frame : std::exchange(framesToObserve_, {})) {
            SODetails::RunEventTask(kName, [&] { ObserveFrame(frame.Lock().Get()); });
        }
        ShowActiveView(shownFor_ == 0 ? collection_ : CollectionOf(shownFor_));
    }
    std::vector<View> waiting;
    for (const Container& container : containers_) {
        View view = container.view.Lock();
        if (view && container.attaching == Attaching::kNotPosted) {
            waiting.push_back(std::move(view));
        }
    }
    SODetails::RunEventTask(kName, [&] {
        dispatcher_.EnsureStarted();
        PostPendingCollection();
        for (const View& view : waiting) {
            PostAttaching(view.Get());
        }
    });
}

void CommentsPanelHandler::AdoptCollection(UIDocumentsCollection* collection)
{
    // A host without its main frame still has its documents.
    SODetails::RunEventTask("CommentsPanelHandler::SetDocumentsCollection",
                            [this] { ObserveHostMainFrame(); });
    const Source former = collection_ ? SourceOf(collection_.Get()) : 0;
    // Released before it is asked which child frames' collections live.
    collection_ = Collection::Retain(collection);
    const Source source = ObserveCollection(collection);
    if (former != source) {
        if (!IsOfChildFrame(CollectionOf(former))) {
            StopObservingCollection(former);
        }
        const View shown = ObservedView();
        if (shown && (shownFor_ == former || shownFor_ == source)) {
            DeactivateContainer(shown.Get());
        }
    }
    for (const Collection& child : ChildCollections()) {
        if (SourceOf(child.Get()) == 0) {  // known since before the handler was detached
            SODetails::RunEventTask("CommentsPanelHandler::SetDocumentsCollection",
                                    [&] { ObserveCollection(child.Get()); });
        }
    }
    SynchroniseWithViews();
}

void CommentsPanelHandler::ObserveHostMainFrame()
{
    const auto service = SP::QueryServiceObject<UIService>();
    BasicServiceObjectPtr<UIMainFrame> frame;
    CallMethod<UIService::GetMainFrame>(service.Get(), frame.Receive());
    const auto window = root_.Window().Lock();
    if (!frame && window) {
        UIWndServiceObjectRequester::QueryServiceObjectFromUIWnd(window.Get(), frame);
    }
    if (frame) {
        ObserveMainFrame(frame.Get());
    }
}

void CommentsPanelHandler::SynchroniseContainers()
{
    if (!root_ || !collection_) {
        return;
    }
    constexpr const char* kName = "CommentsPanelHandler::SynchroniseContainers";
    const auto step = [this](const auto& task) {
        if (!SODetails::RunEventTask(kName, task)) {
            eventMissed_ = true;
        }
    };
    step([this] { RemoveForlornContainers(); });
    step([this] { RemoveStrayContainers(); });
    step([this] { CreateContainersOf(collection_.Get()); });
    step([&] {
        for (const Collection& child : ChildCollections()) {
            step([&] { CreateContainersOf(child.Get()); });
        }
    });
}

void CommentsPanelHandler::SynchroniseWithViews()
{
    if (!root_ || !collection_) {
        return;
    }
    SynchroniseContainers();
    ShowActiveView(collection_);
    constexpr const char* kName = "CommentsPanelHandler::SynchroniseWithViews";
    SODetails::RunEventTask(kName, [this] {
        BasicServiceObjectPtr<UIDocumentViewSbS> sideBySide;
        CallMethod<UIDocumentsCollection::GetActiveSbSView>(collection_.Get(),
                                                            sideBySide.Receive());
        sideBySideView_ = WeakServiceObjectPtr<UIDocumentViewSbS>(sideBySide.Get());
    });
}

void CommentsPanelHandler::ShowActiveView(const Collection& collection)
{
    const bool shown = SODetails::RunEventTask("CommentsPanelHandler::ShowActiveView", [&] {
        const std::uint64_t failedBefore = FailedCallCount();
        BasicServiceObjectPtr<UIDocumentView> active;
        CallMethod<UIDocumentsCollection::GetActiveView>(collection.Get(), active.Receive());
        if (const View view = ViewObject(active.Get())) {
            ActivateContainer(view.Get(), SourceOf(collection.Get()));
        } else if (FailedCallCount() != failedBefore) {
            Fail("CommentsPanelHandler::ShowActiveView", __LINE__);
        } else if (const View observed = ObservedView();
                   observed && shownFor_ == SourceOf(collection.Get())) {
            DeactivateContainer(observed.Get());
        }
    });
    if (!shown) {
        eventMissed_ = true;
    }
}

void CommentsPanelHandler::CreateContainersOf(UIDocumentsCollection* collection)
{
    const Source source = SourceOf(collection);
    const std::uint64_t failedBefore = FailedCallCount();
    const std::vector<View> views = ViewObjectsOf(collection);
    if (FailedCallCount() != failedBefore) {
        eventMissed_ = true;
    }
    for (const View& view : views) {
        if (!SODetails::RunEventTask("CommentsPanelHandler::CreateContainersOf",
                                     [&] { CreateContainer(view.Get(), source); })) {
            eventMissed_ = true;
        }
    }
}

bool CommentsPanelHandler::IsForlorn(const Container& container) const
{
    return !container.view.Lock() || !CollectionOf(container.source);
}

void CommentsPanelHandler::RemoveForlornContainers()
{
    constexpr const char* kName = "CommentsPanelHandler::RemoveForlornContainers";
    const auto isForlorn = [this](const Container& known) { return IsForlorn(known); };
    if (std::none_of(containers_.begin(), containers_.end(), isForlorn)) {
        return;
    }
    std::vector<Collection> remaining = ChildCollections();
    if (collection_) {
        remaining.push_back(collection_);
    }
    for (const Collection& collection : remaining) {
        SODetails::RunEventTask(kName, [&] {
            for (const View& view : ViewObjectsOf(collection.Get())) {
                if (Container* const known = ContainerOf(view.Get())) {
                    known->source = SourceOf(collection.Get());
                }
            }
        });
    }
    std::vector<std::pair<View, std::string>> removed;
    for (const Container& known : containers_) {
        if (IsForlorn(known)) {
            removed.emplace_back(known.view.Lock(), known.key);
        }
    }
    for (const auto& container : removed) {
        StopObservingView(container.first.Get());
        SODetails::RunEventTask(kName, [&] { RemoveIfForlorn(container.second); });
    }
}

void CommentsPanelHandler::RemoveIfForlorn(const std::string& key)
{
    bool isKnown = false;
    for (const Container& known : containers_) {
        if (known.key == key) {
            if (!IsForlorn(known)) {
                return;
            }
            isKnown = true;
        }
    }
    if (isKnown) {
        RemoveContainers(key);
    }
}

void CommentsPanelHandler::RemoveStrayContainers()
{
    ForEachContainer([this](const ElementReference& container) {
        const std::wstring key = container.Attribute("doc-view-addr");
        if (std::none_of(containers_.begin(), containers_.end(),
                         [&](const Container& known) { return FromAscii(known.key) == key; })) {
            container.Delete();
        }
    });
}

void CommentsPanelHandler::ForEachContainer(
    const std::function<void(const ElementReference&)>& step) const
{
    const ElementSet all = root_.SelectAll(kAllContainers);
    for (const UIElement& element : all.Elements()) {
        SODetails::RunEventTask("CommentsPanelHandler::ForEachContainer", [&] {
            const ElementReference container = root_.SameWindow(element.handle);
            if (!container.Parent().Enclosing(kAllContainers)) {
                step(container);
            }
        });
    }
}

template <class Task>
void CommentsPanelHandler::RunOnUIThread(const char* name, Task task) noexcept
{
    const bool known = SODetails::RunEventTask(name, [&] {
        // The handler may be dying on another thread while its event runs here: a reference is only
        // taken where it still lives.
        auto self = WeakServiceObjectPtr<CommentsPanelHandler>::Require(this);
        // An event of the UI thread does not overtake those that other threads have posted.
        if (!dispatcher_.IsUIThread() || waiting_.use_count() > 1) {
            const bool taken = dispatcher_.Post([weak = std::move(self), name,
                                                 run = std::function<void()>(std::move(task)),
                                                 waiting = waiting_]() mutable {
                waiting.reset();  // what this event leads to need not wait for it
                if (const auto handler = weak.Lock()) {
                    handler->RunTask(name, run);
                }
            });
            if (!taken) {
                eventMissed_ = true;
            }
        } else if (const auto handler = self.Lock()) {
            handler->RunTask(name, std::move(task));
        }
    });
    if (!known) {
        eventMissed_ = true;
    }
}

bool CommentsPanelHandler::RunTask(const char* name, const std::function<void()>& task)
{
    if (!dispatcher_.IsUIThread()) {
        return false;  // detached since
    }
    if (!SODetails::RunEventTask(name, [this] { CatchUp(); })) {
        eventMissed_ = true;
    }
    const bool done = SODetails::RunEventTask(name, task);
    if (!done) {
        eventMissed_ = true;
    }
    return done;
}

template <class Step>
void CommentsPanelHandler::RunForView(const char* name, Source source, UIDocumentView* view,
                                      Step step) noexcept
{
    const bool known = SODetails::RunEventTask(name, [&] {
        if (const View object = ViewObject(view)) {
            RunOnUIThread(name, [this, source, step, object] {
                if (IsObserved(source)) {
                    step(object.Get());
                }
            });
        }
    });
    if (!known) {
        eventMissed_ = true;
    }
}

void CommentsPanelHandler::OnDocumentViewCreated(Source source, UIDocumentView* view)
{
    RunForView("CommentsPanelHandler::OnDocumentViewCreated", source, view,
               [this, source](BLDocumentView* object) { CreateContainer(object, source); });
}

void CommentsPanelHandler::OnDocumentViewActivated(Source source, UIDocumentView* view)
{
    RunForView("CommentsPanelHandler::OnDocumentViewActivated", source, view,
               [this, source](BLDocumentView* object) { ActivateContainer(object, source); });
}

void CommentsPanelHandler::OnDocumentViewDeactivated(Source source, UIDocumentView* view)
{
    RunForView("CommentsPanelHandler::OnDocumentViewDeactivated", source, view,
               [this, source](BLDocumentView* object) {
                   // What another collection shows is not this one's to hide.
                   if (shownFor_ == source || ObservedView().Get() != object ||
                       !Has(shownFor_, object)) {
                       DeactivateContainer(object);
                   }
               });
}

void CommentsPanelHandler::OnDocumentViewDestroyed(Source source, UIDocumentView* view)
{
    RunForView("CommentsPanelHandler::OnDocumentViewDestroyed", source, view,
               [this, source](BLDocumentView* object) {
                   const Container* const known = ContainerOf(object);
                   if (known == nullptr || known->source == source || !Has(known->source, object)) {
                       DestroyContainer(object);
                   }
               });
}

void CommentsPanelHandler::OnChildDocumentFrameCreated(UIDocumentFrame* frame)
{
    RunOnUIThread("CommentsPanelHandler::OnChildDocumentFrameCreated",
                  [this, held = BasicServiceObjectPtr<UIDocumentFrame>::Retain(frame)] {
                      ObserveFrame(held.Get());
                  });
}

void CommentsPanelHandler::ObserveFrame(UIDocumentFrame* frame)
{
    Collection collection;
    try {
        CallMethod<UIDocumentFrame::GetDocumentsCollection>(frame, collection.Receive());
        if (collection && !IsOfChildFrame(collection)) {
            childCollections_.push_back(
                WeakServiceObjectPtr<UIDocumentsCollection>::Require(collection.Get()));
        }
        if (collection && collection != collection_ && SourceOf(collection.Get()) == 0) {
            ObserveCollection(collection.Get());
            RemoveForlornContainers();
            CreateContainersOf(collection.Get());
        }
    } catch (...) {
        framesToObserve_.emplace_back(frame);
        eventMissed_ = true;
        throw;
    }
}

bool CommentsPanelHandler::Has(Source source, BLDocumentView* view) const
{
    const Collection collection = CollectionOf(source);
    if (!collection) {
        return false;
    }
    const std::vector<View> views = ViewObjectsOf(collection.Get());
    return std::any_of(views.begin(), views.end(),
                       [view](const View& listed) { return listed.Get() == view; });
}

bool CommentsPanelHandler::IsOfChildFrame(const Collection& collection) const
{
    const std::vector<Collection> living = ChildCollections();
    return std::find(living.begin(), living.end(), collection) != living.end();
}

std::vector<CommentsPanelHandler::Collection> CommentsPanelHandler::ChildCollections() const
{
    std::vector<Collection> living;
    for (const auto& known : childCollections_) {
        if (Collection collection = known.Lock()) {
            living.push_back(std::move(collection));
        }
    }
    return living;
}

CommentsPanelHandler::Container* CommentsPanelHandler::ContainerOf(BLDocumentView* view)
{
    const auto found =
        std::find_if(containers_.begin(), containers_.end(),
                     [view](const Container& known) { return known.view.Lock().Get() == view; });
    return found == containers_.end() ? nullptr : &*found;
}

void CommentsPanelHandler::OnSbSViewActivated(Source source, UIDocumentViewSbS* view)
{
    RunOnUIThread("CommentsPanelHandler::OnSbSViewActivated",
                  [this, source, held = BasicServiceObjectPtr<UIDocumentViewSbS>::Retain(view)] {
                      if (IsObserved(source)) {
                          sideBySideView_ = WeakServiceObjectPtr<UIDocumentViewSbS>(held.Get());
                      }
                  });
}

void CommentsPanelHandler::OnSbSViewDeactivated(Source source, UIDocumentViewSbS* view)
{
    RunOnUIThread("CommentsPanelHandler::OnSbSViewDeactivated",
                  [this, source, held = BasicServiceObjectPtr<UIDocumentViewSbS>::Retain(view)] {
                      if (IsObserved(source) && sideBySideView_.Lock() == held) {
                          sideBySideView_.Reset();
                      }
                  });
}

void CommentsPanelHandler::OnSelectionChanged(BLSelection* selection)
{
    RunOnUIThread("CommentsPanelHandler::OnSelectionChanged",
                  [this, held = BasicServiceObjectPtr<BLSelection>::Retain(selection)] {
                      selection_ = WeakServiceObjectPtr<BLSelection>(held.Get());
                  });
}

ElementSet CommentsPanelHandler::ContainersWithKey(const std::string& key) const
{
    return root_.SelectAll(".panel-content[doc-view-addr=\"" + key + "\"]");
}

void CommentsPanelHandler::CreateContainer(BLDocumentView* view, Source source)
{
    if (!root_) {
        return;
    }
    // A view is announced by its event and may be enumerated too, and several collections may have
    // it.
    if (Container* const known = ContainerOf(view)) {
        known->source = source;
        return;
    }
    const std::uint64_t failedBefore = FailedCallCount();
    std::uint64_t viewNumber = 0;
    CallMethod<BLDocumentView::GetViewNumber>(view, &viewNumber);

    const std::string key = ContainerKey(view);
    RemoveIfForlorn(key);  // of a view that died unheard at the same address
    const std::wstring address = FromAscii(key);
    const std::wstring reply = LocalizedString(L"REPLY");
    const std::wstring remove = LocalizedString(L"DELETE");
    TemplatesPreprocessor preprocessor(kContainerTemplate);
    preprocessor.AddRule(L"DOC_VIEW_ADDR", TemplateAction::kReplace, address);
    preprocessor.AddRule(L"LOCALE_TOKEN_REPLY", TemplateAction::kReplace, L"REPLY");
    preprocessor.AddRule(L"BTN_TEXT_REPLY", TemplateAction::kReplace, reply);
    preprocessor.AddRule(L"LOCALE_TOKEN_DELETE", TemplateAction::kReplace, L"DELETE");
    preprocessor.AddRule(L"BTN_TEXT_DELETE", TemplateAction::kReplace, remove);
    const std::string html = ToUtf8(preprocessor.Do());

    ElementReference body = root_.Enclosing("body");
    if (!body) {
        body = root_.SelectFirst("body");
    }
    if (!body || html.empty()) {
        if (FailedCallCount() != failedBefore) {
            Fail("CommentsPanelHandler::CreateContainer", __LINE__);
        }
        return;
    }
    containers_.push_back({WeakServiceObjectPtr<BLDocumentView>::Require(view), key, source});
    constexpr const char* kName = "CommentsPanelHandler::CreateContainer";
    try {
        const std::uint64_t appendedBefore = FailedCallCount();
        body.SetHtml(html, HtmlPosition::kAppendLast);
        if (FailedCallCount() != appendedBefore) {
            Fail(kName, __LINE__);
        }
    } catch (...) {
        ForgetContainer(view);
        throw;
    }
    SODetails::RunEventTask(kName, [&] { ContainersWithKey(key).Collapse(); });
    PostAttaching(view);
}

void CommentsPanelHandler::PostAttaching(BLDocumentView* view)
{
    NoteAttaching(view, Attaching::kPosted);
    try {
        // Only called while the handler is held.
        if (!dispatcher_.Post([self = BasicServiceObjectPtr<CommentsPanelHandler>::Retain(this),
                               weakView = WeakServiceObjectPtr<BLDocumentView>(view)] {
                SODetails::RunEventTask("CommentsPanelHandler::CreateContainer", [&] {
                    if (const auto living = weakView.Lock()) {
                        self->AttachContainerHandler(living.Get());
                    }
                });
            })) {
            NoteAttaching(view, Attaching::kNotPosted);
        }
    } catch (...) {
        NoteAttaching(view, Attaching::kNotPosted);
        throw;
    }
}

void CommentsPanelHandler::AttachContainerHandler(BLDocumentView* view)
{
    Container* const container = ContainerOf(view);
    if (container == nullptr || container->attaching == Attaching::kDone) {
        return;
    }
    // The host may lead to a change of the containers.
    const std::string key = container->key;
    NoteAttaching(view, Attaching::kNotPosted);
    try {
        const std::uint64_t failedBefore = FailedCallCount();
        const ElementSet containers = ContainersWithKey(key);
        if (containers.IsEmpty()) {
            const bool isGone = FailedCallCount() == failedBefore &&
                                HasMethod<UIWnd::SelectElements>(root_.Window().Lock().Get());
            if (isGone) {
                ForgetContainer(view);
            }
            return;
        }
        const auto handler =
            SODetails::ServiceObjectCppTheConcrete<CommentsContainerHandler>::Create(*view);
        root_.SameWindow(containers.Elements().front().handle)
            .AttachHandler(handler->AsInterface());
        if (handler->HasFailedToAttach() || FailedCallCount() != failedBefore) {
            Fail("CommentsPanelHandler::AttachContainerHandler", __LINE__);
        }
    } catch (...) {
        Container* const failed = ContainerOf(view);
        if (failed != nullptr && ++failed->failedTries % kAttachingTries != 0) {
            PostAttaching(view);
        }
        throw;
    }
    NoteAttaching(view, Attaching::kDone);
}

void CommentsPanelHandler::NoteAttaching(BLDocumentView* view, Attaching attaching)
{
    if (Container* const container = ContainerOf(view)) {
        container->attaching = attaching;
    }
}

void CommentsPanelHandler::ActivateContainer(BLDocumentView* view, Source source)
{
    shownFor_ = source;
    const std::uint64_t failedBefore = FailedCallCount();
    ForEachContainer(
        [](const ElementReference& container) { container.SetStyle("visibility", u"collapse"); });
    ContainersWithKey(ContainerKey(view)).SetVisibility(u"visible");
    if (FailedCallCount() != failedBefore) {
        eventMissed_ = true;
    }
    ObserveView(view);
}

void CommentsPanelHandler::DeactivateContainer(BLDocumentView* view)
{
    const std::uint64_t failedBefore = FailedCallCount();
    ContainersWithKey(ContainerKey(view)).Collapse();
    if (FailedCallCount() != failedBefore) {
        eventMissed_ = true;
    }
    StopObservingView(view);
}

void CommentsPanelHandler::DestroyContainer(BLDocumentView* view)
{
    StopObservingView(view);
    RemoveContainers(ContainerKey(view));
}

void CommentsPanelHandler::ForgetContainer(BLDocumentView* view)
{
    std::erase_if(containers_,
                  [view](const Container& known) { return known.view.Lock().Get() == view; });
}

void CommentsPanelHandler::RemoveContainers(const std::string& key)
{
    ContainersWithKey(key).Delete();
    std::erase_if(containers_, [&](const Container& known) { return known.key == key; });
}
