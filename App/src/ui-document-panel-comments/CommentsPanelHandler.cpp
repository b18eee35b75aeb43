#include "CommentsPanelHandler.h"

#include "CommentsContainerHandler.h"

#include "service-common/ServiceProvider.h"
#include "service-common/WideText.h"
#include "ui-engine/LocalizedStrings.h"
#include "ui-engine/UIService.SO.h"
#include "ui-engine/internal/EventTask.h"
#include "ui-engine/internal/TemplatesPreprocessor.h"
#include "ui-engine/internal/UIWndServiceObjectRequester.h"

#include <boost/format.hpp>

#include <algorithm>
#include <cstdint>
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

BasicServiceObjectPtr<BLDocumentView> ViewObject(UIDocumentView* view)
{
    BasicServiceObjectPtr<BLDocumentView> object;
    CallMethod<UIDocumentView::GetDocumentView>(view, object.Receive());
    return object;
}

// The view objects of a collection, in its order; without those that it fails to hand out.
std::vector<BasicServiceObjectPtr<BLDocumentView>> ViewObjectsOf(UIDocumentsCollection* collection)
{
    using Views = std::vector<BasicServiceObjectPtr<UIDocumentView>>;
    Views views;
    const auto collect = [](void* context, UIDocumentView* view) {
        static_cast<Views*>(context)->push_back(
            BasicServiceObjectPtr<UIDocumentView>::Retain(view));
    };
    CallMethod<UIDocumentsCollection::EnumerateViews>(collection, collect,
                                                      static_cast<void*>(&views));
    std::vector<BasicServiceObjectPtr<BLDocumentView>> objects;
    for (const auto& view : views) {
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
    dispatcher_.EnsureStarted();
    PostPendingCollection();
}

void CommentsPanelHandler::PostPendingCollection()
{
    if (!pending_) {
        return;
    }
    if (dispatcher_.Post(
            [self = BasicServiceObjectPtr<CommentsPanelHandler>::Retain(this), held = pending_] {
                self->RunTask("CommentsPanelHandler::SetDocumentsCollection",
                              [&] { self->AdoptCollection(held.Get()); });
            })) {
        pending_.Reset();
    }
}

void CommentsPanelHandler::TryAgain()
{
    std::vector<View> waiting;
    for (const Container& container : containers_) {
        View view = container.view.Lock();
        if (view && container.attaching == Attaching::kNotPosted) {
            waiting.push_back(std::move(view));
        }
    }
    SODetails::RunEventTask("CommentsPanelHandler::TryAgain", [&] {
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

void CommentsPanelHandler::SynchroniseWithViews()
{
    if (!root_ || !collection_) {
        return;
    }
    // A step that fails leaves the others standing.
    constexpr const char* kName = "CommentsPanelHandler::SynchroniseWithViews";
    SODetails::RunEventTask(kName, [this] { RemoveForlornContainers(); });
    SODetails::RunEventTask(kName, [this] { RemoveStrayContainers(); });
    SODetails::RunEventTask(kName, [this] { CreateContainersOf(collection_.Get()); });
    for (const Collection& child : ChildCollections()) {
        SODetails::RunEventTask(kName, [&] { CreateContainersOf(child.Get()); });
    }
    SODetails::RunEventTask(kName, [this] {
        BasicServiceObjectPtr<UIDocumentView> active;
        CallMethod<UIDocumentsCollection::GetActiveView>(collection_.Get(), active.Receive());
        if (const View view = ViewObject(active.Get())) {
            ActivateContainer(view.Get(), SourceOf(collection_.Get()));
        }
    });
    SODetails::RunEventTask(kName, [this] {
        BasicServiceObjectPtr<UIDocumentViewSbS> sideBySide;
        CallMethod<UIDocumentsCollection::GetActiveSbSView>(collection_.Get(),
                                                            sideBySide.Receive());
        sideBySideView_ = WeakServiceObjectPtr<UIDocumentViewSbS>(sideBySide.Get());
    });
}

void CommentsPanelHandler::CreateContainersOf(UIDocumentsCollection* collection)
{
    const Source source = SourceOf(collection);
    for (const View& view : ViewObjectsOf(collection)) {
        SODetails::RunEventTask("CommentsPanelHandler::CreateContainersOf",
                                [&] { CreateContainer(view.Get(), source); });
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

void CommentsPanelHandler::RunOnUIThread(const char* name, std::function<void()> task)
{
    SODetails::RunEventTask(name, [&] {
        // The handler may be dying on another thread while its event runs here: a reference is only
        // taken where it still lives.
        WeakServiceObjectPtr<CommentsPanelHandler> self(this);
        // An event of the UI thread does not overtake those that other threads have posted.
        if (!dispatcher_.IsUIThread() || waiting_.use_count() > 1) {
            dispatcher_.Post([weak = std::move(self), name, run = std::move(task),
                              waiting = waiting_]() mutable {
                waiting.reset();  // what this event leads to need not wait for it
                if (const auto handler = weak.Lock()) {
                    handler->RunTask(name, run);
                }
            });
        } else if (const auto handler = self.Lock()) {
            handler->RunTask(name, task);
        }
    });
}

void CommentsPanelHandler::RunTask(const char* name, const std::function<void()>& task)
{
    if (!dispatcher_.IsUIThread()) {
        return;  // detached since
    }
    TryAgain();
    SODetails::RunEventTask(name, task);
}

void CommentsPanelHandler::RunForView(const char* name, Source source, UIDocumentView* view,
                                      std::function<void(BLDocumentView*)> step)
{
    SODetails::RunEventTask(name, [&] {
        if (View object = ViewObject(view)) {
            RunOnUIThread(name, [this, source, run = std::move(step), held = std::move(object)] {
                if (IsObserved(source)) {
                    run(held.Get());
                }
            });
        }
    });
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
                      Collection collection;
                      CallMethod<UIDocumentFrame::GetDocumentsCollection>(held.Get(),
                                                                          collection.Receive());
                      if (!collection || IsOfChildFrame(collection)) {
                          return;
                      }
                      childCollections_.emplace_back(collection.Get());
                      if (collection != collection_) {
                          ObserveCollection(collection.Get());
                          RemoveForlornContainers();
                          CreateContainersOf(collection.Get());
                      }
                  });
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
    return root_.SelectAll((boost::format(".panel-content[doc-view-addr=\"%1%\"]") % key).str());
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
        return;
    }
    body.SetHtml(html, HtmlPosition::kAppendLast);
    ContainersWithKey(key).Collapse();
    containers_.push_back({WeakServiceObjectPtr<BLDocumentView>(view), key, source});
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
    try {
        const ElementSet containers = ContainersWithKey(key);
        if (!containers.IsEmpty()) {
            const auto handler =
                SODetails::ServiceObjectCppTheConcrete<CommentsContainerHandler>::Create(*view);
            root_.SameWindow(containers.Elements().front().handle)
                .AttachHandler(handler->AsInterface());
        }
    } catch (...) {
        NoteAttaching(view, Attaching::kNotPosted);
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
    ForEachContainer(
        [](const ElementReference& container) { container.SetStyle("visibility", u"collapse"); });
    shownFor_ = source;
    ContainersWithKey(ContainerKey(view)).SetVisibility(u"visible");
    ObserveView(view);
}

void CommentsPanelHandler::DeactivateContainer(BLDocumentView* view)
{
    ContainersWithKey(ContainerKey(view)).Collapse();
    StopObservingView(view);
}

void CommentsPanelHandler::DestroyContainer(BLDocumentView* view)
{
    StopObservingView(view);
    RemoveContainers(ContainerKey(view));
}

void CommentsPanelHandler::RemoveContainers(const std::string& key)
{
    ContainersWithKey(key).Delete();
    std::erase_if(containers_, [&](const Container& known) { return known.key == key; });
}
