// Tracking: binding to view and document, loading the list on the worker behind the preloader, and
// bringing single pages and items up to date as the document changes.
#include "CommentsContainerHandler.h"

#include "PageListing.h"
#include "RenderQueue.h"

#include "service-common/ErrorRecord.h"
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
    bool rendered = false;  // the worker's
    // Written by the worker before the completion is posted, read after that.
    std::string html;            // UTF-8
    std::exception_ptr failure;  // null: rendered
    bool failedCalls = false;    // calls into the host failed, and were passed over
    bool failedQueries = false;  // and so did queries of the PDF library
    // Set by the worker when the host does not take the completion.
    std::atomic<bool> refused = false;

    // Runs on the worker.
    void Render() noexcept
    {
        if (std::exchange(rendered, true) || dropped.load()) {
            return;
        }
        const std::uint64_t callsBefore = FailedCallCount();
        const std::uint64_t queriesBefore = PDFL::FailedQueryCount();
        try {
            ListRenderer renderer(document.Get());
            renderer.wanted = [this] { return !dropped.load(std::memory_order_relaxed); };
            html = renderer.RenderResultsUtf8();
        } catch (...) {
            html = {};
            failure = std::current_exception();
        }
        failedCalls = FailedCallCount() != callsBefore;
        failedQueries = PDFL::FailedQueryCount() != queriesBefore;
    }

    // Runs on the worker: has the host run Complete on the UI thread. False when the host does not
    // take it, and may be asked again.
    static bool PostCompletion(const std::shared_ptr<Loading>& loading) noexcept
    {
        bool taken = false;
        SODetails::RunEventTask(kLoadName, [&] {
            taken =
                UIThreadDispatcher::PostTo(loading->thread.Get(), [loading] { Complete(loading); });
        });
        loading->refused.store(!taken);
        return taken || !loading->thread;
    }

    // Runs on the UI thread, after Render.
    static void Complete(const std::shared_ptr<Loading>& loading)
    {
        loading->dropped.store(true);  // the worker has nothing more to do for it
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
    view_ = WeakServiceObjectPtr<BLDocumentView>::Require(view);
    viewSubscriptions_.Clear();
    documentReadOnly_ = false;
    isBound_ = false;
    const std::uint64_t failedBefore = FailedCallCount();
    CallMethod<BLDocumentView::IsReadOnly>(view, &documentReadOnly_);
    const auto document = CurrentDocument();
    const bool isBound = FailedCallCount() == failedBefore;
    if (document) {
        SetDocument(document.Get());
    } else {
        documentSubscriptions_.Clear();
        document_.Reset();
        ReloadList();
    }
    isBound_ = isBound;
    viewSubscriptions_.Append(BLDocumentView::Subscribe_OnInputHandleFocusAnnot(
        view, boost::bind(&CommentsContainerHandler::OnFocusAnnot, this, _1, _2)));
}

void CommentsContainerHandler::SetDocument(BLDocument* document)
{
    using namespace boost::placeholders;
    documentSubscriptions_.Clear();
    document_ = WeakServiceObjectPtr<BLDocument>::Require(document);
    documentSubscriptions_.Append(BLDocument::Subscribe_OnPagesChanged(
        document, boost::bind(&CommentsContainerHandler::OnPagesChanged, this, _1, _2)));
    documentSubscriptions_.Append(BLDocument::Subscribe_OnAnnotChanged(
        document, boost::bind(&CommentsContainerHandler::OnAnnotChanged, this, _1, _2, _3)));
    ReloadList();
}

void CommentsContainerHandler::ReloadList()
{
    // The list that lands replaces what cannot be cleared now, and its buttons are its own; no
    // command acts on what is left until then.
    stale_ = true;
    tolerated_ = false;
    const std::uint64_t failedBefore = FailedCallCount();
    const bool cleared = SODetails::RunEventTask(kLoadName, [this] { ClearResults(); }) &&
                         FailedCallCount() == failedBefore;
    LoadResults();
    stale_ = !cleared;
    SODetails::RunEventTask(kLoadName, [this] {
        SelectFirstAnnotItem();
        UpdateButtons();
        UpdateMoveButtons();
    });
}

void CommentsContainerHandler::ReloadListOfDocument()
{
    if (document_.Lock()) {
        isRecovering_ = false;
        ReloadList();
    }
}

void CommentsContainerHandler::Refresh()
{
    if (const auto waiting = loading_; waiting && waiting->refused.load()) {
        Loading::Complete(waiting);
    }
    const bool isWorthATry = (incomplete_ || !isBound_) && !recoveryFailed_;
    if (changeMissed_.load() || (!loading_ && (stale_ || isWorthATry))) {
        Recover();
    }
}

void CommentsContainerHandler::RequireFreshList()
{
    const auto waiting = loading_;
    const bool lands = waiting && waiting->refused.load();
    if (lands) {
        Loading::Complete(waiting);
    }
    const bool missed = changeMissed_.load();
    const bool isWorthATry = (stale_ || !isBound_) && !recoveryFailed_;
    const bool recovers = !loading_ && (missed || isWorthATry);
    if (recovers) {
        Recover();
    }
    if (lands || recovers || missed || (stale_ && !tolerated_)) {
        Fail(kResultNotInitialized, L"Not initialized",
             "CommentsContainerHandler::RequireFreshList", __LINE__);
    }
}

void CommentsContainerHandler::Recover()
{
    isRecovering_ = true;
    if (isBound_) {
        ReloadList();
    } else {
        const auto view = view_.Lock();
        SetDocumentView(view.Get());
    }
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
    const auto loading = std::make_shared<Loading>();
    loading->handler = WeakServiceObjectPtr<CommentsContainerHandler>::Require(this);
    SODetails::RunEventTask(kLoadName, [this] { dispatcher_.EnsureStarted(); });
    loading->thread = dispatcher_.ThreadObject();
    loading->document = std::move(document);
    changeMissed_ = false;  // what is missed from here on may not be in the rendering
    SODetails::RunEventTask(kLoadName,
                            [this] { container_.SelectAll(kPreloader).SetVisibility(u"visible"); });
    try {
        queue_->Add([loading] {
            loading->Render();
            return loading->dropped.load() || Loading::PostCompletion(loading);
        });
    } catch (...) {
        SODetails::RunEventTask(kLoadName, [this] { container_.SelectAll(kPreloader).Collapse(); });
        throw;
    }
    loading_ = loading;
}

void CommentsContainerHandler::LandResults(const std::shared_ptr<Loading>& loading)
{
    const auto touched = std::exchange(touchedPages_, {});
    const bool recovering = std::exchange(isRecovering_, false);
    loading_.reset();
    incomplete_ = loading->failedQueries;
    const std::uint64_t failedBefore = FailedCallCount();
    const std::uint64_t queriesBefore = PDFL::FailedQueryCount();
    bool landed = loading->failure == nullptr;
    // A step that fails leaves the others standing.
    const auto step = [&landed](const auto& task) {
        landed = SODetails::RunEventTask(kLoadName, task) && landed;
    };
    step([this] { container_.SelectAll(kPreloader).Collapse(); });
    if (!loading->failure) {
        step([&] { ShowResults(*loading); });
        // What changed while the worker was rendering may be in the rendering or not. A document
        // that is gone has nothing to bring up to date.
        const auto document = document_.Lock();
        for (const std::uint32_t pageIndex : touched) {
            if (document) {
                step([&] { UpdatePageItem(pageIndex); });
            }
        }
    }
    step([this] { SelectFirstAnnotItem(); });
    step([this] {
        UpdateButtons();
        UpdateMoveButtons();
    });
    incomplete_ = incomplete_ || PDFL::FailedQueryCount() != queriesBefore;
    stale_ = !landed || loading->failedCalls || FailedCallCount() != failedBefore;
    // What fails twice, and is not thrown, may be how this host is: commands act all the same.
    tolerated_ = recovering && landed && stale_;
    recoveryFailed_ = recovering && (stale_ || incomplete_ || !isBound_);
    if (loading->failure) {
        std::rethrow_exception(loading->failure);
    }
    if (landed && (incomplete_ || loading->failedCalls) && (recovering || !stale_)) {
        SetThreadLastError({kResultUnexpected, L"Parts of the list could not be read", kLoadName,
                            "src/ui-document-panel-comments/CommentsContainerHandler", __LINE__});
    }
    if (IsStale() && !recovering) {  // nobody may come by for a while
        PostToUIThread(kLoadName, [this] {
            if (IsStale() && !loading_) {
                Recover();
            }
        });
    }
}

void CommentsContainerHandler::ShowResults(const Loading& loading)
{
    const ElementReference results = container_.SelectFirst(kResults);
    if (!results) {
        Fail(kResultNotInitialized, L"Not initialized", kLoadName, __LINE__);
    }
    results.SetHtml(loading.html, HtmlPosition::kReplaceContent);
    results.Update(kUpdateMeasure);
    const ElementReference message = results.SelectFirst(kNoItemsMessage);
    if (message) {
        message.SetText(LocalizedString(message.Attribute(kLocaleToken)));
    }
}

template <class Task>
bool CommentsContainerHandler::RunOnUIThread(const char* name, const Task& task)
{
    if (!dispatcher_.IsUIThread()) {
        return PostToUIThread(name, task);
    }
    SODetails::RunEventTask(name, task);
    return true;
}

template <class Step>
void CommentsContainerHandler::ChangeList(const Step& step)
{
    Refresh();
    const std::uint64_t callsBefore = FailedCallCount();
    const std::uint64_t queriesBefore = PDFL::FailedQueryCount();
    const auto note = [&](bool failed) {
        if (failed || FailedCallCount() != callsBefore) {
            if (loading_) {
                changeMissed_ = true;  // it may have been rendered without the change
            }
            stale_ = true;
            tolerated_ = false;
            recoveryFailed_ = false;
        }
        if (PDFL::FailedQueryCount() != queriesBefore) {
            incomplete_ = true;
            recoveryFailed_ = false;
        }
    };
    try {
        step();
        note(false);
    } catch (const ServiceObjectException& failure) {
        note(!IsAbsence(failure.Code()));
        throw;
    } catch (...) {
        note(true);
        throw;
    }
}

void CommentsContainerHandler::OnPagesChanged(PDPageOperation operation, const _PDPageRange* range)
{
    if (operation != PDPageOperation::kInserted && operation != PDPageOperation::kDeleted &&
        operation != PDPageOperation::kMoved) {
        return;
    }
    constexpr const char* kName = "CommentsContainerHandler::OnPagesChanged";
    bool followed = false;
    SODetails::RunEventTask(kName, [&] {
        // The range is the caller's; a task that runs later has its own copy.
        std::vector<std::uint32_t> pages;
        if (range != nullptr && range->pages != nullptr) {
            pages.assign(range->pages, range->pages + range->count);
        }
        followed =
            RunOnUIThread(kName, [this, pages = std::move(pages)] { ReloadListOfDocument(); });
    });
    if (!followed) {
        changeMissed_ = true;
    }
}

void CommentsContainerHandler::OnAnnotChanged(PDAnnotOperation operation, unsigned int pageIndex,
                                              _PDAnnotRec* annotation)
{
    const bool ofPage =
        operation == PDAnnotOperation::kAdded || operation == PDAnnotOperation::kRemoved;
    const bool ofItem = operation == PDAnnotOperation::kAppearanceChanged ||
                        operation == PDAnnotOperation::kPropertiesChanged;
    if (annotation == nullptr || !(ofPage || ofItem)) {
        return;
    }
    constexpr const char* kName = "CommentsContainerHandler::OnAnnotChanged";
    bool followed = false;
    SODetails::RunEventTask(kName, [&] {
        const auto changed = PDFL::Annotation::Retain(annotation);
        // What is not listed changes no item, but coming or going it moves its neighbours'
        // positions, and with them their names.
        const std::uint64_t failedBefore = PDFL::FailedQueryCount();
        if (ofPage || changed.IsListed() || PDFL::FailedQueryCount() != failedBefore) {
            followed = RunOnUIThread(kName, [this, operation, pageIndex, changed] {
                ChangeList([&] { ApplyAnnotChange(operation, pageIndex, changed); });
            });
        } else {
            followed = true;
        }
    });
    if (!followed) {
        changeMissed_ = true;
    }
}

void CommentsContainerHandler::OnFocusAnnot(unsigned int pageIndex, _PDAnnotRec* annotation)
{
    if (annotation == nullptr || pageIndex == kPDNoPage) {
        return;
    }
    constexpr const char* kName = "CommentsContainerHandler::OnFocusAnnot";
    SODetails::RunEventTask(kName, [&] {
        RunOnUIThread(kName, [this, pageIndex, focused = PDFL::Annotation::Retain(annotation)] {
            // Commands lead here too: the list that they act on is not loaded anew for little.
            if (IsStale() && !tolerated_) {
                Refresh();
            }
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
    const PDFL::Page page = AcquirePage(&document, pageIndex);
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
    const PDFL::Page page = AcquirePage(&document, pageIndex);
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
    const std::uint64_t failedBefore = FailedCallCount();
    const std::string selector = PageItemSelector(pageIndex);
    ElementReference page = container_.SelectFirst("div.results-container " + selector);
    if (IsInsideItem(page)) {
        page = container_.SelectFirst("div.results-container > " + selector);
    }
    RequireAnswers(failedBefore);
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
    const std::uint64_t failedBefore = FailedCallCount();
    const ElementReference results = container_.SelectFirst(kResults);
    const ElementReference message = results.SelectFirst(kNoItemsMessage);
    const bool hasItems = HasPageItems();
    RequireAnswers(failedBefore);
    if (hasItems && message) {
        message.Delete();
    } else if (!hasItems && !message) {
        results.SetHtml(ToUtf8(ListRenderer::RenderNoItems()), HtmlPosition::kReplaceContent);
    }
}

void CommentsContainerHandler::RequireAnswers(std::uint64_t failedBefore)
{
    if (FailedCallCount() != failedBefore) {
        Fail(kResultNotInitialized, L"Not initialized", "CommentsContainerHandler::RequireAnswers",
             __LINE__);
    }
}

bool CommentsContainerHandler::HasPageItems() const
{
    return static_cast<bool>(container_.SelectFirst(kAnyPageItem));
}
