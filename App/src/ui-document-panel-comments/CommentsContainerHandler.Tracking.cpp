// Tracking: binding to view and document, loading the list on the worker behind the preloader, and
// bringing single pages and items up to date as the document changes.
#include "CommentsContainerHandler.h"

#include "PageListing.h"
#include "RenderQueue.h"

#include "service-common/WideText.h"
#include "ui-engine/LocalizedStrings.h"
#include "ui-engine/NarrowText.h"
#include "ui-engine/internal/EventTask.h"

#include <boost/bind/bind.hpp>

#include <atomic>
#include <exception>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr const char* kResults = "div.results-container";
constexpr const char* kPreloader = "div.picture[preloader]";
constexpr const char* kAnyPageItem = "div.results-container ul[page-item]";
constexpr const char* kNoItemsMessage = ":root > #NoItemsMessage";  // under the results
constexpr const char* kItemsOfPage = ":root > li > div > ul.comments > li[annot-name]";
constexpr const char* kLoadName = "CommentsContainerHandler::LoadResults";
constexpr const char* kLocaleToken = "__l_o_c_a_l_e__t_o_k_e_n__";

// Rendered HTML without the line breaks around it, which an update would pile up in the list.
std::string InPlace(std::wstring_view html)
{
    constexpr std::wstring_view kSpace = L" \t\r\n";
    const std::size_t first = html.find_first_not_of(kSpace);
    if (first == html.npos) {
        return {};
    }
    return ToUtf8(html.substr(first, html.find_last_not_of(kSpace) - first + 1));
}

std::string PageItemSelector(std::uint32_t pageIndex)
{
    return "ul[page-item=\"" + std::to_string(pageIndex) + "\"]";
}

}  // namespace

// One rendering of the whole list, shared by the handler, the worker and the posted completion.
// The handler shows only the loading that it waits for. Host and module objects are released on the
// UI thread.
struct CommentsContainerHandler::Loading {
    std::atomic<bool> dropped = false;
    WeakServiceObjectPtr<CommentsContainerHandler> handler;  // used on the UI thread alone
    BasicServiceObjectPtr<UIThread> thread;  // the worker may still be calling it when it completes
    BasicServiceObjectPtr<BLDocument> document;
    // Written by the worker before the completion is posted, read after that.
    std::string html;            // UTF-8
    std::exception_ptr failure;  // null: rendered
    // Set by the worker when the host does not take the completion.
    std::atomic<bool> refused = false;

    // Runs on the worker.
    void Render() noexcept
    {
        if (dropped.load()) {
            return;
        }
        try {
            ListRenderer renderer(document.Get());
            renderer.wanted = [this] { return !dropped.load(std::memory_order_relaxed); };
            html = renderer.RenderResultsUtf8();
        } catch (...) {
            html.clear();
            failure = std::current_exception();
        }
    }

    // Runs on the UI thread, after Render.
    static void Complete(const std::shared_ptr<Loading>& loading)
    {
        loading->document.Reset();
        const auto handler = loading->handler.Lock();
        if (handler && handler->loading_ == loading) {
            SODetails::RunEventTask(kLoadName, [&] { handler->LandResults(loading); });
        }
        loading->html = {};  // the job that holds this record may outlive the loading
    }
};

void CommentsContainerHandler::SetDocumentView(BLDocumentView* view)
{
    using namespace boost::placeholders;
    view_ = WeakServiceObjectPtr<BLDocumentView>(view);
    viewSubscriptions_.Clear();
    documentReadOnly_ = false;
    CallMethod<BLDocumentView::IsReadOnly>(view, &documentReadOnly_);
    const auto document = CurrentDocument();
    if (document) {
        SetDocument(document.Get());
    } else {
        documentSubscriptions_.Clear();
        document_.Reset();
        ReloadList();
    }
    viewSubscriptions_.Append(BLDocumentView::Subscribe_OnInputHandleFocusAnnot(
        view, boost::bind(&CommentsContainerHandler::OnFocusAnnot, this, _1, _2)));
}

void CommentsContainerHandler::SetDocument(BLDocument* document)
{
    using namespace boost::placeholders;
    documentSubscriptions_.Clear();
    document_ = WeakServiceObjectPtr<BLDocument>(document);
    documentSubscriptions_.Append(BLDocument::Subscribe_OnPagesChanged(
        document, boost::bind(&CommentsContainerHandler::OnPagesChanged, this, _1, _2)));
    documentSubscriptions_.Append(BLDocument::Subscribe_OnAnnotChanged(
        document, boost::bind(&CommentsContainerHandler::OnAnnotChanged, this, _1, _2, _3)));
    ReloadList();
}

void CommentsContainerHandler::ReloadList()
{
    ClearResults();
    LoadResults();
    SelectFirstAnnotItem();
    UpdateButtons();
    UpdateMoveButtons();
}

void CommentsContainerHandler::ClearResults()
{
    container_.SelectFirst(kResults).SelectAll(":root > *").Delete();
}

void CommentsContainerHandler::DropLoading()
{
    if (loading_) {
        loading_->dropped.store(true);
        loading_.reset();
    }
    touchedPages_.clear();
}

void CommentsContainerHandler::LoadResults()
{
    DropLoading();
    auto document = document_.Lock();
    if (!document || !queue_) {
        container_.SelectAll(kPreloader)
            .Collapse();  // a loading that was dropped may have shown it
        return;
    }
    container_.SelectAll(kPreloader).SetVisibility(u"visible");
    loading_ = std::make_shared<Loading>();
    loading_->handler = WeakServiceObjectPtr<CommentsContainerHandler>(this);
    SODetails::RunEventTask(kLoadName, [this] { dispatcher_.EnsureStarted(); });
    loading_->thread = dispatcher_.ThreadObject();
    loading_->document = std::move(document);
    queue_->Add([loading = loading_] {
        loading->Render();
        bool taken = false;
        SODetails::RunEventTask(kLoadName, [&] {
            taken = UIThreadDispatcher::PostTo(loading->thread.Get(),
                                               [loading] { Loading::Complete(loading); });
        });
        loading->refused.store(!taken);
    });
}

void CommentsContainerHandler::LandResults(const std::shared_ptr<Loading>& loading)
{
    const auto touched = std::exchange(touchedPages_, {});
    loading_.reset();
    container_.SelectAll(kPreloader).Collapse();
    if (loading->failure) {
        UpdateButtons();
        UpdateMoveButtons();
        std::rethrow_exception(loading->failure);
    }
    const ElementReference results = container_.SelectFirst(kResults);
    results.SetHtml(loading->html, HtmlPosition::kReplaceContent);
    results.Update(kUpdateMeasure);
    // What changed while the worker was rendering may be in the rendering or not.
    for (const std::uint32_t pageIndex : touched) {
        SODetails::RunEventTask(kLoadName, [&] { UpdatePageItem(pageIndex); });
    }
    const ElementReference message = results.SelectFirst(kNoItemsMessage);
    if (message) {
        message.SetText(LocalizedString(message.Attribute(kLocaleToken)));
    }
    SelectFirstAnnotItem();
    UpdateButtons();
    UpdateMoveButtons();
}

void CommentsContainerHandler::OnPagesChanged(PDPageOperation operation, const _PDPageRange* range)
{
    if (operation != PDPageOperation::kInserted && operation != PDPageOperation::kDeleted &&
        operation != PDPageOperation::kMoved) {
        return;
    }
    // The range is the caller's; a task that runs later has its own copy.
    std::vector<std::uint32_t> pages;
    if (range != nullptr && range->pages != nullptr) {
        pages.assign(range->pages, range->pages + range->count);
    }
    RunOnUIThread("CommentsContainerHandler::OnPagesChanged", [this, pages = std::move(pages)] {
        if (document_.Lock()) {
            ReloadList();
        }
    });
}

void CommentsContainerHandler::OnAnnotChanged(PDAnnotOperation operation, unsigned int pageIndex,
                                              _PDAnnotRec* annotation)
{
    SODetails::RunEventTask("CommentsContainerHandler::OnAnnotChanged", [&] {
        const auto changed = PDFL::Annotation::Retain(annotation);
        const bool ofPage =
            operation == PDAnnotOperation::kAdded || operation == PDAnnotOperation::kRemoved;
        const bool ofItem = operation == PDAnnotOperation::kAppearanceChanged ||
                            operation == PDAnnotOperation::kPropertiesChanged;
        // What is not listed changes no item, but coming or going it moves its neighbours'
        // positions, and with them their names.
        if (changed && (ofPage || (ofItem && changed.IsListed()))) {
            RunOnUIThread("CommentsContainerHandler::OnAnnotChanged",
                          [this, operation, pageIndex, changed] {
                              ApplyAnnotChange(operation, pageIndex, changed);
                          });
        }
    });
}

void CommentsContainerHandler::OnFocusAnnot(unsigned int pageIndex, _PDAnnotRec* annotation)
{
    if (annotation == nullptr || pageIndex == kPDNoPage) {
        return;
    }
    SODetails::RunEventTask("CommentsContainerHandler::OnFocusAnnot", [&] {
        RunOnUIThread("CommentsContainerHandler::OnFocusAnnot",
                      [this, pageIndex, focused = PDFL::Annotation::Retain(annotation)] {
                          SelectAnnotItem(pageIndex, focused);
                      });
    });
}

void CommentsContainerHandler::ApplyAnnotChange(PDAnnotOperation operation, std::uint32_t pageIndex,
                                                const PDFL::Annotation& annotation)
{
    const auto document = document_.Lock();
    std::int32_t pageCount = 0;
    CallMethod<BLDocument::GetPageCount>(document.Get(), &pageCount);
    if (pageCount <= 0 || pageIndex >= static_cast<std::uint32_t>(pageCount)) {
        return;
    }
    if (loading_) {
        touchedPages_.insert(pageIndex);  // applied when the list lands
        if (const auto waiting = loading_; waiting->refused.load()) {
            Loading::Complete(waiting);
        }
        return;
    }
    const bool ofItem = operation == PDAnnotOperation::kAppearanceChanged ||
                        operation == PDAnnotOperation::kPropertiesChanged;
    // Items that are not those of the page's annotations any more are all made anew.
    const bool inPlace = ofItem ? ReplaceAnnotItem(pageIndex, annotation)
                                : !annotation.IsListed() && FollowPositions(pageIndex);
    if (!inPlace) {
        UpdatePageItem(pageIndex);
        if (!HasCurrentAnnotItem()) {
            SelectFirstAnnotItem();
        }
        UpdateButtons();
        UpdateMoveButtons();
    }
}

auto CommentsContainerHandler::ListedAnnotations(BLDocument& document, std::uint32_t pageIndex)
    -> std::vector<NamedAnnotation>
{
    PDFL::Page page;
    CallMethod<BLDocument::AcquirePage>(&document, pageIndex, page.Receive());
    PageListing listing(page, pageIndex);
    std::vector<NamedAnnotation> listed;
    for (std::wstring name; listing.Next(name);) {
        listed.emplace_back(name, listing.Annotation());
    }
    return listed;
}

bool CommentsContainerHandler::FollowPositions(std::uint32_t pageIndex)
{
    const auto document = document_.Lock();
    const std::vector<NamedAnnotation> listed = ListedAnnotations(*document.Get(), pageIndex);
    const ElementSet items = PageItem(pageIndex).SelectAll(kItemsOfPage);
    if (items.Size() != listed.size()) {
        return false;
    }
    const auto itemAt = [&](std::size_t i) {
        return container_.SameWindow(items.Elements()[i].handle);
    };
    bool moved = false;
    for (std::size_t i = 0; i < listed.size() && !moved; ++i) {
        moved = itemAt(i).Attribute("annot-name") != listed[i].first;
    }
    ListRenderer renderer(document.Get());
    for (std::size_t i = 0; i < listed.size() && moved; ++i) {
        RenewItem(itemAt(i), renderer.RenderAnnotItem(listed[i].first, listed[i].second));
    }
    return true;
}

bool CommentsContainerHandler::ReplaceAnnotItem(std::uint32_t pageIndex,
                                                const PDFL::Annotation& annotation)
{
    const auto document = document_.Lock();
    const std::wstring name = MakeAnnotUniqueName(document.Get(), pageIndex, annotation);
    const ElementSet items = PageItem(pageIndex).SelectAll(kItemsOfPage);
    // An array may hold an annotation twice: its items share the name.
    std::vector<ElementReference> named;
    std::size_t firstPlace = 0;
    for (std::size_t i = 0; i < items.Size(); ++i) {
        ElementReference item = container_.SameWindow(items.Elements()[i].handle);
        if (item.Attribute("annot-name") == name) {
            firstPlace = named.empty() ? i : firstPlace;
            named.push_back(std::move(item));
        }
    }
    if (!named.empty() && firstPlace != PlaceAmongListed(*document.Get(), pageIndex, annotation)) {
        // Another's item, named before a change of positions whose own event is still to come.
        return FollowPositions(pageIndex);
    }
    ListRenderer renderer(document.Get());
    for (const ElementReference& item : named) {
        RenewItem(item, renderer.RenderAnnotItem(name, annotation));
    }
    return true;
}

// How many listed annotations stand before the first place of `annotation` on the page.
std::size_t CommentsContainerHandler::PlaceAmongListed(BLDocument& document,
                                                       std::uint32_t pageIndex,
                                                       const PDFL::Annotation& annotation)
{
    PDFL::Page page;
    CallMethod<BLDocument::AcquirePage>(&document, pageIndex, page.Receive());
    std::size_t place = 0;
    for (std::uint32_t position = 0; position < page.AnnotationCount(); ++position) {
        const auto other = PDFL::Annotation::At(page, position);
        if (other.IsEqual(annotation)) {
            break;
        }
        place += other.IsListed() ? 1u : 0u;
    }
    return place;
}

void CommentsContainerHandler::RenewItem(const ElementReference& item, std::wstring_view html)
{
    const bool wasCurrent = (item.State() & kStateCurrent) != 0;
    const ElementReference list = item.Parent();
    const ElementReference previous = item.PreviousSibling();
    item.SetHtml(InPlace(html), HtmlPosition::kReplaceWhole);
    if (wasCurrent) {
        const ElementReference renewed =
            previous ? previous.NextSibling() : list.SelectFirst(":root > *");
        renewed.SetState(kStateCurrent, 0);
    }
}

ElementReference CommentsContainerHandler::PageItem(std::uint32_t pageIndex) const
{
    const std::string selector = PageItemSelector(pageIndex);
    ElementReference page = container_.SelectFirst("div.results-container " + selector);
    if (IsInsideItem(page)) {
        page = container_.SelectFirst("div.results-container > " + selector);
    }
    return page;
}

void CommentsContainerHandler::UpdatePageItem(std::uint32_t pageIndex)
{
    const auto document = document_.Lock();
    if (!document) {
        Fail(kResultNotInitialized, L"Not initialized", "CommentsContainerHandler::UpdatePageItem",
             __LINE__);
    }
    ListRenderer renderer(document.Get());
    const std::string html = InPlace(RenderPageItem(renderer, pageIndex));
    const ElementReference present = PageItem(pageIndex);
    if (present && html.empty()) {
        container_.SelectAll("div.results-container > " + PageItemSelector(pageIndex)).Delete();
    } else if (present) {
        present.SetHtml(html, HtmlPosition::kReplaceWhole);
    } else if (!html.empty()) {
        InsertPageItem(pageIndex, html);
    }
    RefreshNoItemsMessage();
}

void CommentsContainerHandler::InsertPageItem(std::uint32_t pageIndex, std::string_view html)
{
    for (std::uint32_t before = pageIndex; before-- > 0;) {
        if (const ElementReference preceding = PageItem(before)) {
            preceding.SetHtml(html, HtmlPosition::kInsertAfter);
            return;
        }
    }
    container_.SelectFirst(kResults).SetHtml(html, HtmlPosition::kInsertFirst);
}

void CommentsContainerHandler::RefreshNoItemsMessage()
{
    const ElementReference results = container_.SelectFirst(kResults);
    const ElementReference message = results.SelectFirst(kNoItemsMessage);
    const bool hasItems = HasPageItems();
    if (hasItems && message) {
        message.Delete();
    } else if (!hasItems && !message) {
        results.SetHtml(ToUtf8(ListRenderer::RenderNoItems()), HtmlPosition::kReplaceContent);
    }
}

bool CommentsContainerHandler::HasPageItems() const
{
    return static_cast<bool>(container_.SelectFirst(kAnyPageItem));
}
