// The handler of one comments container: shows, inside its element, every listed annotation of one
// document view's document, keeps that list equal to the document, and acts on clicks and keys.
// One class with four jobs, each in a source file of its own:
//
//   rendering   document -> HTML                  ListRenderer, forwarded to
//   tracking    events -> list                    CommentsContainerHandler.Tracking.cpp
//   lookup      list item <-> annotation          CommentsContainerHandler.Lookup.cpp
//   commands    clicks and keys -> list and view  CommentsContainerHandler.Commands.cpp
//
// Everything runs on the UI thread except where it says otherwise. The DOM is the only record of
// which item is current and which pages are collapsed. Failures are ServiceObjectException.
//
// A loading or an update that fails leaves a list that is known to be stale: the next change or
// command loads it anew, and no command acts on an item of it, unless the host fails without an
// exception in that loading too.
#pragma once

#include "AnnotDate.h"
#include "ListRenderer.h"

#include "pdf-library/PDFL.h"
#include "ui-engine/BLDocument.SO.h"
#include "ui-engine/BLDocumentView.SO.h"
#include "ui-engine/ElementAccess.h"
#include "ui-engine/SOEvent.h"
#include "ui-engine/UIThreadDispatcher.h"
#include "ui-engine/internal/CppUIHandlerBase.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

class RenderQueue;
struct BLService;

class CommentsContainerHandler
    : public SOImpl::CppUIHandlerBase<CommentsContainerHandler, SODetails::ServiceObjectTraits> {
public:
    // Serves `view`, of which it keeps a weak reference. Binds when it is attached.
    explicit CommentsContainerHandler(BLDocumentView& view);
    ~CommentsContainerHandler();

    // --- UIHandler -----------------------------------------------------------------------------

    UIElement ElementAttachedTo() const noexcept { return container_.AsElement(); }
    std::uint32_t SubscribedEvents() const noexcept;
    // Starts the dispatcher and binds the handler to its view. A failure leaves it detached.
    ResultCode Attached(UIWnd& window, const UIElement& element);
    bool HasFailedToAttach() const noexcept { return attachingFailed_; }
    // Drops a rendering under way, all subscriptions and the dispatcher. May come twice.
    ResultCode Detached();
    ResultCode HandleKey(HtmlElementHandle element, UIKeyEvent* event);
    ResultCode HandleEvent(HtmlElementHandle element, UIBehaviourEvent* event);
    // Posts a fresh loading of the list.
    ResultCode OnLocaleChanged();

    // --- Rendering: see ListRenderer.h [any-thread] ---

    static std::wstring RenderResults(ListRenderer& renderer) { return renderer.RenderResults(); }
    static std::wstring RenderPageItem(ListRenderer& renderer, std::uint32_t pageIndex)
    {
        return renderer.RenderPageItem(pageIndex);
    }
    // Fails as MakeAnnotUniqueName does.
    static std::wstring RenderAnnotItem(ListRenderer& renderer, std::uint32_t pageIndex,
                                        const PDFL::Annotation& annotation)
    {
        return renderer.RenderAnnotItem(
            MakeAnnotUniqueName(renderer.Document(), pageIndex, annotation), annotation);
    }
    static std::wstring RenderAnnotTooltip(ListRenderer& renderer,
                                           const PDFL::Annotation& annotation,
                                           const std::wstring& tooltipId)
    {
        return renderer.RenderAnnotTooltip(annotation, tooltipId);
    }
    static const std::wstring& GetAnnotTypeName(ListRenderer& renderer,
                                                const PDFL::Annotation& annotation)
    {
        return renderer.KindOf(annotation).displayName;
    }
    static std::wstring_view GetAnnotClassName(ListRenderer& renderer,
                                               const PDFL::Annotation& annotation)
    {
        return renderer.KindOf(annotation).className;
    }
    static std::wstring FormatAnnotDate(const _PDDateRec& date, const std::wstring& format)
    {
        std::wstring text;
        WriteAnnotDate(date, format, text);
        return text;
    }
    static std::wstring ConvertContentsText(const PDFL::Annotation& annotation)
    {
        return ListRenderer::ConvertContentsText(annotation);
    }

    // --- Tracking --------------------------------------------------------------------------------

    void SetDocumentView(BLDocumentView* view);
    void SetDocument(BLDocument* document);
    // Shows the preloader and queues a rendering; one that is still under way is dropped.
    void LoadResults();
    // Event handlers. [any-thread]
    void OnPagesChanged(PDPageOperation operation, const _PDPageRange* range);
    void OnAnnotChanged(PDAnnotOperation operation, unsigned int pageIndex,
                        _PDAnnotRec* annotation);
    void OnFocusAnnot(unsigned int pageIndex, _PDAnnotRec* annotation);
    // Brings one page item up to date, in its place.
    void UpdatePageItem(std::uint32_t pageIndex);

    // --- Lookup ----------------------------------------------------------------------------------

    // "%1%_%2%" of the page index and the annotation's position. [any-thread]
    static std::wstring MakeAnnotUniqueName(BLDocument* document, std::uint32_t pageIndex,
                                            const PDFL::Annotation& annotation);
    // Position of the annotation in its page's array; the first of equal ones. Fails with "Not
    // initialized", "Page index out of range" or "Annot not found". [any-thread]
    static std::uint32_t GetAnnotIndex(BLDocument* document, std::uint32_t pageIndex,
                                       const PDFL::Annotation& annotation);
    // The annotation at the position that the text begins with (0 when it begins with no digit).
    // Fails with "Not initialized", "Page index out of range" or "Annot index out of range".
    static PDFL::Annotation FindAnnot(BLDocument* document, std::uint32_t pageIndex,
                                      std::wstring_view indexText);
    // Page index of the current item, from its page item. Fails with "Not initialized".
    std::uint32_t GetPageIndex() const;
    // Annotation of the current item; empty for an item with an empty name. Fails as FindAnnot
    // does, and with "Not initialized" without a current item.
    PDFL::Annotation GetCurrentAnnot() const;
    // The list item of an annotation, or empty.
    ElementReference FindAnnotItem(std::uint32_t pageIndex,
                                   const PDFL::Annotation& annotation) const;

    // --- Selection, navigation and commands ------------------------------------------------------

    bool HasCurrentAnnotItem() const;
    bool HasSiblingAnnotItem(bool up) const;
    bool HasAdjacentPageAnnotItem(bool up) const;
    bool MoveWithinPage(bool up);
    bool MoveToAdjacentPage(bool up);
    bool SelectFirstAnnotItem(bool makeCurrent = true);
    bool SelectLastAnnotItem();
    void SelectAnnotItem(std::uint32_t pageIndex, const PDFL::Annotation& annotation);
    void RevealAnnotItem(const ElementReference& item);
    void NavigateToAnnot();
    void DeleteAnnot();
    void UpdateButtons();
    void UpdateMoveButtons();
    void UpdateExpandCollapseButtons();
    void UpdateDeleteButton();

private:
    struct Loading;
    using NamedAnnotation = std::pair<std::wstring, PDFL::Annotation>;

    // Throws the failure of an operation of this class.
    [[noreturn]] static void Fail(ResultCode code, const wchar_t* message, const char* function,
                                  std::uint32_t line);

    // Runs `task` on the UI thread: now when this is it, else posted, and dropped when the handler
    // is gone or detached by then. Failures of the task end it. False when the host takes no posted
    // task; fails when it fails to take it. [any-thread]
    template <class Task>
    bool RunOnUIThread(const char* name, const Task& task);
    bool PostToUIThread(const char* name, const std::function<void()>& task);
    // Runs a step that follows a change of the document; whatever fails in it makes the list
    // stale, but for the absence of what the change was about, which another change has removed.
    template <class Step>
    void ChangeList(const Step& step);

    // The document of the view, asked for anew each time; empty when view or document is gone.
    BasicServiceObjectPtr<BLDocument> CurrentDocument() const;

    // Empties the list and loads it anew; the second one when a document is bound.
    void ReloadList();
    void ReloadListOfDocument();
    void ClearResults();
    void DropLoading();
    void LandResults(const std::shared_ptr<Loading>& loading);
    void ShowResults(const Loading& loading);

    // Whether the items shown may be other than those of the document.
    bool IsStale() const noexcept { return stale_ || changeMissed_.load(); }
    // Before a change is acted on: loads a list anew that is stale, or that lacks what the host
    // failed to give.
    void Refresh();
    // Before a command acts: loads a stale list anew, which then has nothing to act on: fails with
    // "Not initialized". Does not try again what has just failed.
    void RequireFreshList();
    void Recover();
    void ApplyAnnotChange(PDAnnotOperation operation, std::uint32_t pageIndex,
                          const PDFL::Annotation& annotation);
    // Renders the item of an annotation anew, if it has one. False, and nothing is done, when the
    // page's items are not those of its annotations.
    bool ReplaceAnnotItem(std::uint32_t pageIndex, const PDFL::Annotation& annotation);
    // Brings the items of a page up to date, in their states, when their annotations' positions are
    // no longer those that they are named after. False as above.
    bool FollowPositions(std::uint32_t pageIndex);
    // The listed annotations of a page with the names of their items, in order.
    static std::vector<NamedAnnotation> ListedAnnotations(BLDocument& document,
                                                          std::uint32_t pageIndex);
    static std::size_t PlaceAmongListed(BLDocument& document, std::uint32_t pageIndex,
                                        const PDFL::Annotation& annotation);
    static void RenewItem(const ElementReference& item, std::wstring_view html);
    void InsertPageItem(std::uint32_t pageIndex, std::string_view html);
    // Keeps the no-items paragraph and page items from being shown together, or neither.
    void RefreshNoItemsMessage();
    // Fails when the engine cannot tell.
    ElementReference PageItem(std::uint32_t pageIndex) const;
    // Fails when a call has failed since `failedBefore` (FailedCallCount), so that what was found,
    // or not found, is not relied on.
    static void RequireAnswers(std::uint64_t failedBefore);

    // Whether an element belongs to what a comment says.
    static bool IsInsideItem(const ElementReference& element);
    ElementReference CurrentItem() const;
    ElementReference SiblingAnnotItem(bool up) const;
    ElementReference AdjacentPageAnnotItem(bool up) const;
    // Nothing for an empty reference. The delete button follows the current item.
    void MakeCurrent(const ElementReference& item);
    void TogglePage(const ElementReference& icon);
    void SetStateOfAllPages(std::uint32_t state);
    void MoveAndNavigate(bool up);
    void ActOnKey(std::uint32_t virtualKey);
    void ActOnClick(const ElementReference& target);
    void RefreshResults();
    bool HasPageItems() const;
    void EnableButton(const char* selector, bool enable);
    static void ShowInView(BLService& service, BLDocumentView& view, BLDocument& document,
                           std::uint32_t pageIndex, const PDFL::Annotation& annotation,
                           const _PDRect& rectangle);

    WeakServiceObjectPtr<BLDocumentView> view_;
    WeakServiceObjectPtr<BLDocument> document_;  // the one that is listed and subscribed to
    SOEvent::SubscriptionList documentSubscriptions_;
    SOEvent::SubscriptionList viewSubscriptions_;
    UIThreadDispatcher dispatcher_;
    ElementReference container_;
    bool documentReadOnly_ = false;
    bool attachingFailed_ = false;

    std::shared_ptr<RenderQueue> queue_;    // held while attached
    std::shared_ptr<Loading> loading_;      // the rendering that may still land
    std::set<std::uint32_t> touchedPages_;  // changed since that rendering began

    bool stale_ = false;                      // since a step failed, until a loading has landed
    std::atomic<bool> changeMissed_ = false;  // by a task that could not be posted [any-thread]
    bool incomplete_ = false;      // the host failed to give a text or an annotation of the list
    bool isBound_ = true;          // false: something failed while the handler bound to its view
    bool isRecovering_ = false;    // the loading under way was begun because of the above
    bool recoveryFailed_ = false;  // and the last such one did not help
    bool tolerated_ = false;       // but it landed: commands act on it
};
