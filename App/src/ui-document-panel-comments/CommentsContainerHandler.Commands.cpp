// Selection, navigation and commands: what clicks and keys do to the list and to the view, and
// which buttons are enabled. All of it reads the DOM afresh each time.
#include "CommentsContainerHandler.h"

#include "service-common/ServiceProvider.h"
#include "service-common/SingletonStaticData.h"
#include "ui-engine/BLService.SO.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <span>

namespace {

constexpr const char* kResults = "div.results-container";
constexpr const char* kEnclosingResults = ":root div.results-container";
constexpr const char* kAnnotItem = "li[annot-name]";
// Contents are markup, and may look like pages, captions and items.
constexpr const char* kPages = "div.results-container > ul[page-item] > li[page-index]";
constexpr const char* kCaption =
    "div.results-container > ul[page-item] > li[page-index] > div.icon";
constexpr const char* kFirstItem =
    "div.results-container ul[page-item]:first-child li[page-index]:first-child "
    "li[annot-name]:first-child";
constexpr const char* kLastItem =
    "div.results-container ul[page-item]:last-child li[page-index]:last-child "
    "li[annot-name]:last-child";
constexpr const char* kLastShownItem =
    "div.results-container > ul[page-item]:last-child > li[page-index]:last-child > div > "
    "ul.comments > li[annot-name]:last-child";
constexpr const char* kLastShownItemOfPage =
    ":root > li > div > ul.comments > li[annot-name]:last-child";

constexpr const char* kDeleteCommand = "Annot_Delete";

// The page element that holds an item: the item's list, the box around it, the page's li.
ElementReference PageOf(const ElementReference& item)
{
    return item.Parent().Parent().Parent();
}

// What is shown is the comment around what its contents look like.
ElementReference ShownItem(ElementReference item)
{
    while (const ElementReference around = item.Parent().Enclosing(":root li[annot-name]")) {
        item = around;
    }
    return item;
}

bool IsCollapsed(const ElementReference& page)
{
    return (page.State() & kStateCollapsed) != 0;
}

Atom DeleteCommand()
{
    static std::atomic<Atom> cached = kAtomUnresolved;
    return SP::Details::ResolveOnce(kDeleteCommand, cached);
}

bool IsCommandKey(std::uint32_t virtualKey)
{
    constexpr std::uint32_t kKeys[] = {kKeyEnter, kKeyPageUp,  kKeyPageDown,  kKeyEnd,
                                       kKeyHome,  kKeyUpArrow, kKeyDownArrow, kKeyDelete};
    return std::find(std::begin(kKeys), std::end(kKeys), virtualKey) != std::end(kKeys);
}

}  // namespace

ResultCode CommentsContainerHandler::HandleKey(HtmlElementHandle, UIKeyEvent* event)
{
    if (event != nullptr && event->kind == kKeyDown && IsCommandKey(event->virtualKey) &&
        container_.SameWindow(event->target).Enclosing(kEnclosingResults)) {
        RequireFreshList();
        ActOnKey(event->virtualKey);
    }
    return kResultDeclined;
}

void CommentsContainerHandler::ActOnKey(std::uint32_t virtualKey)
{
    bool moved = false;
    switch (virtualKey) {
    case kKeyEnter:
        NavigateToAnnot();
        return;
    case kKeyDelete:
        DeleteAnnot();
        return;
    case kKeyPageUp:
        moved = MoveToAdjacentPage(true);
        break;
    case kKeyPageDown:
        moved = MoveToAdjacentPage(false);
        break;
    case kKeyEnd:
        moved = SelectLastAnnotItem();
        break;
    case kKeyHome:
        moved = SelectFirstAnnotItem(true);
        break;
    case kKeyUpArrow:
        moved = MoveWithinPage(true);
        break;
    case kKeyDownArrow:
        moved = MoveWithinPage(false);
        break;
    default:
        return;
    }
    if (moved) {
        UpdateMoveButtons();
        CurrentItem().ScrollIntoView();
    }
}

ResultCode CommentsContainerHandler::HandleEvent(HtmlElementHandle element, UIBehaviourEvent* event)
{
    if (event != nullptr &&
        (event->kind == kBehaviourClick || event->kind == kBehaviourActivated)) {
        if (const ElementReference target = container_.SameWindow(event->target)) {
            ActOnClick(target);
        }
    }
    return CppUIHandlerBase::HandleEvent(element, event);
}

void CommentsContainerHandler::ActOnClick(const ElementReference& target)
{
    using Handler = CommentsContainerHandler;
    struct ClickTarget {
        const char* selector;
        void (*act)(Handler& handler, const ElementReference& target);
    };
    // Contents of a comment are markup: what looks like a button inside the list is none.
    static constexpr ClickTarget kListTargets[] = {
        {kCaption,
         [](Handler& handler, const ElementReference& icon) { handler.TogglePage(icon); }},
        {"div.results-container ul.comments li[annot-name]",
         [](Handler& handler, const ElementReference& item) {
             handler.MakeCurrent(ShownItem(item));
             handler.NavigateToAnnot();
             handler.UpdateMoveButtons();
         }},
    };
    static constexpr ClickTarget kButtons[] = {
        {"#expand-all",
         [](Handler& handler, const ElementReference&) {
             handler.SetStateOfAllPages(kStateExpanded);
         }},
        {"#collapse-all",
         [](Handler& handler, const ElementReference&) {
             handler.SetStateOfAllPages(kStateCollapsed);
         }},
        {"#reply", [](Handler&, const ElementReference&) {}},
        {"#delete", [](Handler& handler, const ElementReference&) { handler.DeleteAnnot(); }},
        {"#move-top",
         [](Handler& handler, const ElementReference&) { handler.MoveAndNavigate(true); }},
        {"#move-bottom",
         [](Handler& handler, const ElementReference&) { handler.MoveAndNavigate(false); }},
    };
    const bool isInList = static_cast<bool>(target.Enclosing(kEnclosingResults));
    const std::span<const ClickTarget> targets =
        isInList ? std::span<const ClickTarget>(kListTargets) : kButtons;
    for (const ClickTarget& click : targets) {
        if (target.Matches(click.selector)) {
            RequireFreshList();
            click.act(*this, target);
            return;
        }
    }
}

void CommentsContainerHandler::TogglePage(const ElementReference& icon)
{
    const ElementReference page = icon.Parent();
    if (IsCollapsed(page)) {
        page.SetState(kStateExpanded, kStateCollapsed);
    } else {
        page.SetState(kStateCollapsed, kStateExpanded);
    }
    RefreshResults();
    UpdateExpandCollapseButtons();
    UpdateDeleteButton();
}

void CommentsContainerHandler::SetStateOfAllPages(std::uint32_t state)
{
    container_.SelectAll(kPages).ChangeState(state, 0);
    RefreshResults();
    UpdateExpandCollapseButtons();
    UpdateDeleteButton();
}

void CommentsContainerHandler::MoveAndNavigate(bool up)
{
    if (MoveWithinPage(up) || MoveToAdjacentPage(up)) {
        CurrentItem().ScrollIntoView();
        NavigateToAnnot();
        UpdateMoveButtons();
    }
}

bool CommentsContainerHandler::HasCurrentAnnotItem() const
{
    return static_cast<bool>(CurrentItem());
}

ElementReference CommentsContainerHandler::SiblingAnnotItem(bool up) const
{
    const ElementReference item = CurrentItem();
    ElementReference sibling = up ? item.PreviousSibling() : item.NextSibling();
    return sibling.Matches(kAnnotItem) ? sibling : ElementReference();
}

ElementReference CommentsContainerHandler::AdjacentPageAnnotItem(bool up) const
{
    const ElementReference page = CurrentItem().Enclosing(":root ul[page-item]");
    const ElementReference adjacent = up ? page.PreviousSibling() : page.NextSibling();
    ElementReference item = adjacent.SelectFirst(up ? ":root li[annot-name]:last-child"
                                                    : ":root li[annot-name]:first-child");
    if (IsInsideItem(item)) {
        item = adjacent.SelectFirst(kLastShownItemOfPage);
    }
    return item.Matches(kAnnotItem) ? item : ElementReference();
}

bool CommentsContainerHandler::HasSiblingAnnotItem(bool up) const
{
    return static_cast<bool>(SiblingAnnotItem(up));
}

bool CommentsContainerHandler::HasAdjacentPageAnnotItem(bool up) const
{
    return static_cast<bool>(AdjacentPageAnnotItem(up));
}

void CommentsContainerHandler::MakeCurrent(const ElementReference& item)
{
    if (item) {
        item.SetState(kStateCurrent, 0);  // the engine takes the state from the item that had it
        UpdateDeleteButton();
    }
}

bool CommentsContainerHandler::MoveWithinPage(bool up)
{
    const ElementReference item = CurrentItem();
    if (!item) {
        return false;
    }
    RevealAnnotItem(item);
    const ElementReference sibling = SiblingAnnotItem(up);
    MakeCurrent(sibling);
    return static_cast<bool>(sibling);
}

bool CommentsContainerHandler::MoveToAdjacentPage(bool up)
{
    const ElementReference item = AdjacentPageAnnotItem(up);
    MakeCurrent(item);
    return static_cast<bool>(item);
}

bool CommentsContainerHandler::SelectFirstAnnotItem(bool makeCurrent)
{
    const ElementReference item = container_.SelectFirst(kFirstItem);
    MakeCurrent(item);
    if (!makeCurrent) {
        item.SetState(0, kStateCurrent);
        UpdateDeleteButton();
    }
    return static_cast<bool>(item);
}

bool CommentsContainerHandler::SelectLastAnnotItem()
{
    ElementReference item = container_.SelectFirst(kLastItem);
    if (IsInsideItem(item)) {
        item = container_.SelectFirst(kLastShownItem);
    }
    MakeCurrent(item);
    return static_cast<bool>(item);
}

void CommentsContainerHandler::SelectAnnotItem(std::uint32_t pageIndex,
                                               const PDFL::Annotation& annotation)
{
    const ElementReference item = FindAnnotItem(pageIndex, annotation);
    if (item) {
        MakeCurrent(item);
        UpdateMoveButtons();
        RevealAnnotItem(item);
        item.ScrollIntoView();
    }
}

void CommentsContainerHandler::RevealAnnotItem(const ElementReference& item)
{
    const ElementReference page = PageOf(item);
    if (!page) {
        return;
    }
    page.SetState(kStateExpanded, kStateCollapsed);
    RefreshResults();
    UpdateExpandCollapseButtons();
    UpdateDeleteButton();
}

void CommentsContainerHandler::RefreshResults()
{
    container_.SelectAll(kResults).Update(kUpdateMeasure);
}

void CommentsContainerHandler::EnableButton(const char* selector, bool enable)
{
    container_.SelectAll(selector).ChangeState(enable ? 0 : kStateDisabled,
                                               enable ? kStateDisabled : 0);
}

void CommentsContainerHandler::UpdateButtons()
{
    const bool hasItems = HasPageItems();
    EnableButton("#reply", hasItems);
    EnableButton("#move-top", hasItems);
    EnableButton("#move-bottom", hasItems);
    UpdateExpandCollapseButtons();
    UpdateDeleteButton();
}

void CommentsContainerHandler::UpdateMoveButtons()
{
    const auto canMove = [this](bool up) {
        return HasPageItems() && (HasSiblingAnnotItem(up) || HasAdjacentPageAnnotItem(up));
    };
    EnableButton("#move-top", canMove(true));
    EnableButton("#move-bottom", canMove(false));
}

void CommentsContainerHandler::UpdateExpandCollapseButtons()
{
    const ElementSet pages = container_.SelectAll(kPages);
    EnableButton("#expand-all", !pages.IsEmpty() && !pages.AllInState(kStateExpanded));
    EnableButton("#collapse-all", !pages.IsEmpty() && !pages.AllInState(kStateCollapsed));
}

void CommentsContainerHandler::UpdateDeleteButton()
{
    const ElementReference item = CurrentItem();
    EnableButton("#delete",
                 HasPageItems() && !documentReadOnly_ && item && !IsCollapsed(PageOf(item)));
}

void CommentsContainerHandler::NavigateToAnnot()
{
    constexpr const char* kFunction = "CommentsContainerHandler::NavigateToAnnot";
    const auto view = view_.Lock();
    if (!view) {
        return;
    }
    std::uint32_t flags = 0;
    CallMethod<BLDocumentView::GetInteractionFlags>(view.Get(), &flags);
    if ((flags & kInteractionLocked) != 0) {
        return;
    }
    BasicServiceObjectPtr<BLService> service;
    try {
        service = SP::QueryServiceObject<BLService>();
    } catch (const ServiceObjectException&) {
        service = nullptr;
    }
    if (!service) {
        Fail(kResultNotInitialized, L"Not initialized", kFunction, __LINE__);
    }
    const std::uint32_t pageIndex = GetPageIndex();
    const PDFL::Annotation annotation = GetCurrentAnnot();
    if (!annotation) {
        Fail(kResultNotInitialized, L"Not initialized", kFunction, __LINE__);
    }
    _PDRect rectangle{};
    const ResultCode code = annotation.Rectangle(rectangle);
    if (code != kResultOk) {
        Fail(code, L"Annot rectangle not available", kFunction, __LINE__);
    }
    const auto document = CurrentDocument();
    if (document) {
        ShowInView(*service.Get(), *view.Get(), *document.Get(), pageIndex, annotation, rectangle);
    } else {
        const BLGoToRequest request{pageIndex, kGoToModeRectangle, rectangle};
        CallMethod<BLDocumentView::GoTo>(view.Get(), &request);
    }
    CallMethod<BLDocumentView::FocusAnnotation>(view.Get(), pageIndex, annotation.Get());
}

void CommentsContainerHandler::ShowInView(BLService& service, BLDocumentView& view,
                                          BLDocument& document, std::uint32_t pageIndex,
                                          const PDFL::Annotation& annotation,
                                          const _PDRect& rectangle)
{
    constexpr const char* kFunction = "CommentsContainerHandler::NavigateToAnnot";
    const _PDRect normalised = PDFL::Normalised(rectangle);
    const double x = normalised.left + (normalised.right - normalised.left) * 0.5;
    const double y = normalised.bottom + (normalised.top - normalised.bottom) * 0.5;
    const BLGoToRequest request{pageIndex, kGoToModeRectangle, {x, y, x, y}};
    CallMethod<BLDocumentView::GoTo>(&view, &request);

    // Going there may have changed the document; the annotation must still be one.
    bool listed = false;
    const ResultCode code = PDFL::Library().AnnotIsListed(annotation.Get(), &listed);
    if (code != kResultOk) {
        Fail(code, L"Annot not available", kFunction, __LINE__);
    }

    BLHighlightArguments arguments{&document, &request, annotation.Get(), 1.0, 0, 0};
    CallMethod<BLDocumentView::GetPageScale>(&view, pageIndex, &arguments.pageScale);
    CallMethod<BLDocumentView::GetPageRotation>(&view, pageIndex, &arguments.pageRotation);
    BasicServiceObjectPtr<BLAnnotNavigator> navigator;
    CallMethod<BLService::GetAnnotNavigator>(&service, navigator.Receive());
    BasicServiceObjectPtr<ServiceObject> highlight;
    CallMethod<BLAnnotNavigator::BuildHighlight>(navigator.Get(), &arguments, highlight.Receive());
    if (!highlight) {
        Fail(kResultNotInitialized, L"Not initialized", kFunction, __LINE__);
    }
    CallMethod<BLDocumentView::ShowHighlight>(&view, highlight.Get());
}

void CommentsContainerHandler::DeleteAnnot()
{
    constexpr const char* kFunction = "CommentsContainerHandler::DeleteAnnot";
    if (documentReadOnly_) {
        return;
    }
    const auto view = view_.Lock();
    if (!view) {
        return;
    }
    bool permitted = false;
    const CallResult asked = CallMethod<BLDocumentView::IsPermitted>(
        view.Get(), kPermissionSubjectAnnotation, kPermissionOperationDelete, kPermissionScopeUser,
        &permitted);
    if (asked.called && !permitted) {
        return;
    }
    const auto document = CurrentDocument();
    if (!document) {
        Fail(kResultNotInitialized, L"Not initialized", kFunction, __LINE__);
    }
    const std::uint32_t pageIndex = GetPageIndex();
    const PDFL::Annotation annotation = GetCurrentAnnot();
    CallMethod<BLDocumentView::EndEditing>(view.Get(), 1u);
    CallMethod<BLDocumentView::ClearSelection>(view.Get(), 0u);
    const BLAnnotCommandArguments arguments{document.Get(), pageIndex, 0, annotation.Get()};
    CallMethod<BLDocument::ExecuteCommand>(document.Get(), DeleteCommand(), &arguments);
}
