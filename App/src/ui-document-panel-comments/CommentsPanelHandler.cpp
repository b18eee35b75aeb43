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

// Collects the collection's views.
void CollectView(void* context, UIDocumentView* view)
{
    static_cast<std::vector<BasicServiceObjectPtr<UIDocumentView>>*>(context)->push_back(
        BasicServiceObjectPtr<UIDocumentView>::Retain(view));
}

}  // namespace

CommentsPanelHandler::CommentsPanelHandler()
{
    try {
        StartDispatcher();
    } catch (const ServiceObjectException&) {
        // A host without its UI service yet: tried again when the handler is attached.
    }
}

CommentsPanelHandler::~CommentsPanelHandler()
{
    Detached();
}

void CommentsPanelHandler::StartDispatcher()
{
    if (!dispatcher_.IsStarted()) {
        dispatcher_.Start();
    }
}

ResultCode CommentsPanelHandler::Attached(UIWnd& window, const UIElement& element)
{
    constexpr const char* kName = "CommentsPanelHandler::Attached";
    root_ = ElementReference(element, WeakServiceObjectPtr<UIWnd>(&window));
    SODetails::RunEventTask(kName, [this] { StartDispatcher(); });
    // Of a collection that came before the panel had its element.
    SODetails::RunEventTask(kName, [this] { SynchroniseWithViews(); });
    return kResultOk;
}

ResultCode CommentsPanelHandler::Detached()
{
    DropSubscriptions();
    sideBySideView_.Reset();
    selection_.Reset();
    root_ = {};
    collection_.Reset();
    viewsWithContainer_.clear();
    childCollections_.clear();
    dispatcher_.Detach();
    return kResultOk;
}

void CommentsPanelHandler::SetDocumentsCollection(UIDocumentsCollection* collection)
{
    if (collection == nullptr) {
        return;
    }
    dispatcher_.Post([self = BasicServiceObjectPtr<CommentsPanelHandler>::Retain(this),
                      held = BasicServiceObjectPtr<UIDocumentsCollection>::Retain(collection)] {
        SODetails::RunEventTask("CommentsPanelHandler::SetDocumentsCollection",
                                [&] { self->AdoptCollection(held.Get()); });
    });
}

void CommentsPanelHandler::AdoptCollection(UIDocumentsCollection* collection)
{
    if (!dispatcher_.IsUIThread()) {
        return;  // detached since
    }
    // A host without its main frame still has its documents.
    SODetails::RunEventTask("CommentsPanelHandler::SetDocumentsCollection",
                            [this] { ObserveHostMainFrame(); });
    childCollections_.clear();
    ObserveCollection(collection);
    collection_ = BasicServiceObjectPtr<UIDocumentsCollection>::Retain(collection);
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
    ObserveMainFrame(frame.Get());
}

void CommentsPanelHandler::SynchroniseWithViews()
{
    if (!root_ || !collection_) {
        return;
    }
    // A step that fails leaves the others standing.
    constexpr const char* kName = "CommentsPanelHandler::SynchroniseWithViews";
    SODetails::RunEventTask(kName, [this] { CreateContainersOf(collection_.Get()); });
    SODetails::RunEventTask(kName, [this] {
        BasicServiceObjectPtr<UIDocumentView> active;
        CallMethod<UIDocumentsCollection::GetActiveView>(collection_.Get(), active.Receive());
        if (const View view = ViewObject(active.Get())) {
            ActivateContainer(view.Get());
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
    std::vector<BasicServiceObjectPtr<UIDocumentView>> views;
    CallMethod<UIDocumentsCollection::EnumerateViews>(collection, &CollectView,
                                                      static_cast<void*>(&views));
    for (const auto& view : views) {
        SODetails::RunEventTask("CommentsPanelHandler::CreateContainersOf", [&] {
            if (const View object = ViewObject(view.Get())) {
                CreateContainer(object.Get());
            }
        });
    }
}

void CommentsPanelHandler::RunOnUIThread(const char* name, std::function<void()> task)
{
    SODetails::RunEventTask(name, [&] {
        if (dispatcher_.IsUIThread()) {
            task();
            return;
        }
        dispatcher_.Post([self = BasicServiceObjectPtr<CommentsPanelHandler>::Retain(this), name,
                          run = std::move(task)] {
            if (self->dispatcher_.IsUIThread()) {
                SODetails::RunEventTask(name, run);
            }
        });
    });
}

void CommentsPanelHandler::RunForView(const char* name, UIDocumentView* view,
                                      void (CommentsPanelHandler::*step)(BLDocumentView*))
{
    SODetails::RunEventTask(name, [&] {
        if (View object = ViewObject(view)) {
            RunOnUIThread(name,
                          [this, step, held = std::move(object)] { (this->*step)(held.Get()); });
        }
    });
}

void CommentsPanelHandler::OnDocumentViewCreated(UIDocumentView* view)
{
    RunForView("CommentsPanelHandler::OnDocumentViewCreated", view,
               &CommentsPanelHandler::CreateContainer);
}

void CommentsPanelHandler::OnDocumentViewActivated(UIDocumentView* view)
{
    RunForView("CommentsPanelHandler::OnDocumentViewActivated", view,
               &CommentsPanelHandler::ActivateContainer);
}

void CommentsPanelHandler::OnDocumentViewDeactivated(UIDocumentView* view)
{
    RunForView("CommentsPanelHandler::OnDocumentViewDeactivated", view,
               &CommentsPanelHandler::DeactivateContainer);
}

void CommentsPanelHandler::OnDocumentViewDestroyed(UIDocumentView* view)
{
    RunForView("CommentsPanelHandler::OnDocumentViewDestroyed", view,
               &CommentsPanelHandler::DestroyContainer);
}

void CommentsPanelHandler::OnChildDocumentFrameCreated(UIDocumentFrame* frame)
{
    RunOnUIThread("CommentsPanelHandler::OnChildDocumentFrameCreated",
                  [this, held = BasicServiceObjectPtr<UIDocumentFrame>::Retain(frame)] {
                      BasicServiceObjectPtr<UIDocumentsCollection> collection;
                      CallMethod<UIDocumentFrame::GetDocumentsCollection>(held.Get(),
                                                                          collection.Receive());
                      if (collection && IsNew(collection)) {
                          childCollections_.emplace_back(collection.Get());
                          AlsoObserveCollection(collection.Get());
                          CreateContainersOf(collection.Get());
                      }
                  });
}

bool CommentsPanelHandler::IsNew(
    const BasicServiceObjectPtr<UIDocumentsCollection>& collection) const
{
    return collection != collection_ &&
           std::none_of(childCollections_.begin(), childCollections_.end(),
                        [&](const auto& known) { return known.Lock() == collection; });
}

bool CommentsPanelHandler::HasContainer(BLDocumentView* view)
{
    bool has = false;
    std::erase_if(viewsWithContainer_, [&](const auto& known) {
        const auto living = known.Lock();
        has = has || living.Get() == view;
        return !living;
    });
    return has;
}

void CommentsPanelHandler::OnSbSViewActivated(UIDocumentViewSbS* view)
{
    RunOnUIThread("CommentsPanelHandler::OnSbSViewActivated",
                  [this, held = BasicServiceObjectPtr<UIDocumentViewSbS>::Retain(view)] {
                      sideBySideView_ = WeakServiceObjectPtr<UIDocumentViewSbS>(held.Get());
                  });
}

void CommentsPanelHandler::OnSbSViewDeactivated(UIDocumentViewSbS*)
{
    RunOnUIThread("CommentsPanelHandler::OnSbSViewDeactivated",
                  [this] { sideBySideView_.Reset(); });
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

void CommentsPanelHandler::CreateContainer(BLDocumentView* view)
{
    // A view is announced by its event and may be enumerated too.
    if (!root_ || HasContainer(view)) {
        return;
    }
    std::uint64_t viewNumber = 0;
    CallMethod<BLDocumentView::GetViewNumber>(view, &viewNumber);

    const std::string key = ContainerKey(view);
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
    viewsWithContainer_.emplace_back(view);

    dispatcher_.Post([self = BasicServiceObjectPtr<CommentsPanelHandler>::Retain(this),
                      weakView = WeakServiceObjectPtr<BLDocumentView>(view), key] {
        SODetails::RunEventTask("CommentsPanelHandler::CreateContainer", [&] {
            if (const auto living = weakView.Lock()) {
                self->AttachContainerHandler(key, living.Get());
            }
        });
    });
}

void CommentsPanelHandler::AttachContainerHandler(const std::string& key, BLDocumentView* view)
{
    const ElementSet containers = ContainersWithKey(key);
    if (containers.IsEmpty()) {
        return;
    }
    const auto handler =
        SODetails::ServiceObjectCppTheConcrete<CommentsContainerHandler>::Create(*view);
    root_.SameWindow(containers.Elements().front().handle).AttachHandler(handler->AsInterface());
}

void CommentsPanelHandler::ActivateContainer(BLDocumentView* view)
{
    root_.SelectAll(kAllContainers).Collapse();
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
    ContainersWithKey(ContainerKey(view)).Delete();
    std::erase_if(viewsWithContainer_,
                  [view](const auto& known) { return known.Lock().Get() == view; });
    StopObservingView(view);
}
