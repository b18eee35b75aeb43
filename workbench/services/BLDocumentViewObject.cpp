#include "services/BLDocumentViewObject.h"

#include "services/AnnotationPlace.h"

#include <atomic>
#include <utility>

namespace Workbench {

namespace {

// Index of a page after a change of the pages; kPDNoPage when the page is gone.
std::uint32_t IndexAfter(const Documents::PagesChange& change, std::uint32_t page)
{
    const std::vector<std::uint32_t>& pages = change.pages;
    switch (change.operation) {
    case PDPageOperation::kInserted:
        for (const std::uint32_t inserted : pages) {
            page += page >= inserted ? 1 : 0;
        }
        return page;
    case PDPageOperation::kDeleted: {
        std::uint32_t before = 0;
        for (const std::uint32_t deleted : pages) {
            if (deleted == page) {
                return kPDNoPage;
            }
            before += deleted < page ? 1 : 0;
        }
        return page - before;
    }
    case PDPageOperation::kMoved: {
        const std::uint32_t from = pages.at(0);
        const std::uint32_t to = pages.at(1);
        if (page == from) {
            return to;
        }
        if (from < page && page <= to) {
            return page - 1;
        }
        return to <= page && page < from ? page + 1 : page;
    }
    case PDPageOperation::kRotated:
    case PDPageOperation::kCropped:
        break;
    }
    return page;
}

HostCall::Argument PlaceForLog(const BLDocumentObject* document, std::uint32_t page,
                               const _PDAnnotRec* annotation)
{
    const auto place =
        document == nullptr ? std::nullopt : PlaceName(document->Content(), page, annotation);
    return place ? HostCall::Argument(*place) : HostCall::Argument(nullptr);
}

}  // namespace

BLSelectionObject::BLSelectionObject(std::uint32_t kind) : kind_(kind)
{
    Offer<BLSelection::GetKind, &BLSelectionObject::GetKind>();
}

ResultCode BLSelectionObject::GetKind(std::uint32_t* kind) const
{
    if (kind == nullptr) {
        return kResultNullArgument;
    }
    *kind = kind_;
    return kResultOk;
}

BLDocumentViewObject::BLDocumentViewObject(HostStatePtr state,
                                           BasicServiceObjectPtr<BLDocumentObject> document)
    : state_(std::move(state)), document_(std::move(document)), number_([] {
          static std::atomic<std::uint64_t> lastNumber = 0;
          return ++lastNumber;
      }())
{
    Offer<BLDocumentView::GetDocument, &BLDocumentViewObject::GetDocument>();
    Offer<BLDocumentView::IsReadOnly, &BLDocumentViewObject::IsReadOnly>();
    Offer<BLDocumentView::GetInteractionFlags, &BLDocumentViewObject::GetInteractionFlags>();
    Offer<BLDocumentView::GoTo, &BLDocumentViewObject::GoTo>();
    Offer<BLDocumentView::FocusAnnotation, &BLDocumentViewObject::FocusAnnotation>();
    Offer<BLDocumentView::IsPermitted, &BLDocumentViewObject::IsPermitted>();
    Offer<BLDocumentView::EndEditing, &BLDocumentViewObject::EndEditing>();
    Offer<BLDocumentView::ClearSelection, &BLDocumentViewObject::ClearSelection>();
    Offer<BLDocumentView::GetPageScale, &BLDocumentViewObject::GetPageScale>();
    Offer<BLDocumentView::GetPageRotation, &BLDocumentViewObject::GetPageRotation>();
    Offer<BLDocumentView::ShowHighlight, &BLDocumentViewObject::ShowHighlight>();
    Offer<BLDocumentView::GetViewNumber, &BLDocumentViewObject::GetViewNumber>();
}

void BLDocumentViewObject::Connect()
{
    if (document_) {
        document_->AddView(*this);
    }
}

std::optional<BLGoToRequest> BLDocumentViewObject::LastTarget() const
{
    return target_;
}

BLDocumentViewObject::Focus BLDocumentViewObject::FocusedAnnotation() const
{
    const std::lock_guard lock(focusMutex_);
    return focus_;
}

std::optional<std::string> BLDocumentViewObject::FocusedPlace() const
{
    const Focus focus = FocusedAnnotation();
    return document_ ? PlaceName(document_->Content(), focus.page, focus.annotation.Get())
                     : std::nullopt;
}

void BLDocumentViewObject::TellChange() const
{
    if (changed_) {
        changed_();
    }
}

bool BLDocumentViewObject::StoreFocus(std::uint32_t page, Documents::AnnotationRef annotation)
{
    Focus focus{page, std::move(annotation)};  // the former one is released after the lock
    const std::lock_guard lock(focusMutex_);
    const bool changes = focus_.page != focus.page || focus_.annotation != focus.annotation;
    std::swap(focus_, focus);
    return changes;
}

void BLDocumentViewObject::SetFocus(std::uint32_t page, Documents::AnnotationRef annotation)
{
    const std::uint32_t focused = annotation ? page : kPDNoPage;
    if (StoreFocus(focused, annotation)) {
        TellChange();
        FireFocus(focused, annotation.Get());
    }
}

void BLDocumentViewObject::FocusAnew(std::uint32_t page, Documents::AnnotationRef annotation)
{
    StoreFocus(page, annotation);
    TellChange();
    FireFocus(page, annotation.Get());
}

bool BLDocumentViewObject::AdjustFocus(const Documents::Change& change)
{
    Focus lost;  // released after the lock
    const std::lock_guard lock(focusMutex_);
    if (!focus_.annotation) {
        return false;
    }
    if (const auto* pages = std::get_if<Documents::PagesChange>(&change)) {
        focus_.page = IndexAfter(*pages, focus_.page);
    } else if (const auto& annotation = std::get<Documents::AnnotationChange>(change);
               annotation.operation == PDAnnotOperation::kRemoved &&
               annotation.page == focus_.page && annotation.annotation == focus_.annotation) {
        focus_.page = kPDNoPage;
    }
    if (focus_.page != kPDNoPage) {
        return false;
    }
    lost = std::exchange(focus_, {});
    return true;
}

void BLDocumentViewObject::FireFocus(std::uint32_t page, _PDAnnotRec* annotation)
{
    state_->Fire(Event<BLDocumentView::OnInputHandleFocusAnnot>(), page, annotation);
    const auto selection =
        BLSelectionObject::Make(annotation == nullptr ? kSelectionEmpty : kSelectionAnnotation);
    state_->Fire(Event<BLDocumentView::OnSelectionChanged>(), selection->AsInterface());
}

void BLDocumentViewObject::CheckPage(std::uint32_t pageIndex) const
{
    const std::uint32_t count = document_ ? document_->Content().PageCount() : 0;
    if (pageIndex >= count) {
        FailCall(kResultOutOfRange, "the view has no page " + std::to_string(pageIndex) +
                                        ", its document has " + std::to_string(count));
    }
}

ResultCode BLDocumentViewObject::GetDocument(BLDocument** document) const
{
    if (document == nullptr) {
        return kResultNullArgument;
    }
    state_->calls.Query("BLDocumentView.GetDocument");
    HandOut(document_, document);
    return kResultOk;
}

ResultCode BLDocumentViewObject::IsReadOnly(bool* readOnly) const
{
    if (readOnly == nullptr) {
        return kResultNullArgument;
    }
    state_->calls.Query("BLDocumentView.IsReadOnly");
    *readOnly = document_ && document_->Content().ReadOnly();
    return kResultOk;
}

ResultCode BLDocumentViewObject::GetInteractionFlags(std::uint32_t* flags) const
{
    if (flags == nullptr) {
        return kResultNullArgument;
    }
    state_->calls.Query("BLDocumentView.GetInteractionFlags");
    *flags = state_->interactionLocked ? kInteractionLocked : 0;
    return kResultOk;
}

ResultCode BLDocumentViewObject::GoTo(const BLGoToRequest* request)
{
    if (request == nullptr) {
        return kResultNullArgument;
    }
    const _PDRect& target = request->target;
    state_->calls.Request(
        "BLDocumentView.GoTo", request->pageIndex, request->mode,
        std::vector<double>{target.left, target.bottom, target.right, target.top});
    if (document_) {
        CheckPage(request->pageIndex);
    }
    const bool isOtherPage = !target_ || target_->pageIndex != request->pageIndex;
    target_ = *request;
    ++targetCount_;
    TellChange();
    if (isOtherPage) {
        state_->Fire(Event<BLDocumentView::OnFocusPageChanged>(), request->pageIndex);
    }
    return kResultOk;
}

ResultCode BLDocumentViewObject::FocusAnnotation(std::uint32_t pageIndex, _PDAnnotRec* annotation)
{
    state_->calls.Request("BLDocumentView.FocusAnnotation", pageIndex,
                          PlaceForLog(document_.Get(), pageIndex, annotation));
    SetFocus(pageIndex, Documents::AnnotationRef::Retain(annotation));
    return kResultOk;
}

ResultCode BLDocumentViewObject::IsPermitted(std::uint32_t subject, std::uint32_t operation,
                                             std::uint32_t scope, bool* permitted) const
{
    if (permitted == nullptr) {
        return kResultNullArgument;
    }
    state_->calls.Query("BLDocumentView.IsPermitted", subject, operation, scope);
    const bool isDeletion = subject == kPermissionSubjectAnnotation &&
                            operation == kPermissionOperationDelete &&
                            scope == kPermissionScopeUser;
    *permitted = isDeletion && document_ && document_->Content().AnnotationDeletionPermitted();
    return kResultOk;
}

ResultCode BLDocumentViewObject::EndEditing(std::uint32_t keepChange)
{
    state_->calls.Request("BLDocumentView.EndEditing", keepChange);
    return kResultOk;
}

ResultCode BLDocumentViewObject::ClearSelection(std::uint32_t keepFocus)
{
    state_->calls.Request("BLDocumentView.ClearSelection", keepFocus);
    if (keepFocus == 0) {
        SetFocus(kPDNoPage, {});
    }
    return kResultOk;
}

ResultCode BLDocumentViewObject::GetPageScale(std::uint32_t pageIndex, double* scale) const
{
    if (scale == nullptr) {
        return kResultNullArgument;
    }
    *scale = 0;
    state_->calls.Query("BLDocumentView.GetPageScale", pageIndex);
    CheckPage(pageIndex);
    *scale = 1;
    return kResultOk;
}

ResultCode BLDocumentViewObject::GetPageRotation(std::uint32_t pageIndex,
                                                 std::uint32_t* degrees) const
{
    if (degrees == nullptr) {
        return kResultNullArgument;
    }
    *degrees = 0;
    state_->calls.Query("BLDocumentView.GetPageRotation", pageIndex);
    CheckPage(pageIndex);
    return kResultOk;
}

ResultCode BLDocumentViewObject::ShowHighlight(ServiceObject* highlight)
{
    state_->calls.Request("BLDocumentView.ShowHighlight", highlight != nullptr);
    highlight_ = BasicServiceObjectPtr<ServiceObject>::Retain(highlight);
    return kResultOk;
}

ResultCode BLDocumentViewObject::GetViewNumber(std::uint64_t* number) const
{
    if (number == nullptr) {
        return kResultNullArgument;
    }
    state_->calls.Query("BLDocumentView.GetViewNumber");
    *number = number_;
    return kResultOk;
}

}  // namespace Workbench
