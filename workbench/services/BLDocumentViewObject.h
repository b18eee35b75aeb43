// The host's "BLDocumentView": a view without drawing, which records go-to requests, the focused
// annotation and the selection.
#pragma once

#include "documents/Document.h"
#include "services/BLDocumentObject.h"
#include "services/HostObject.h"
#include "services/HostState.h"
#include "ui-engine/BLDocumentView.SO.h"

#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

namespace Workbench {

// Kinds of selection, as BLSelection::GetKind reports them.
inline constexpr std::uint32_t kSelectionEmpty = 0;
inline constexpr std::uint32_t kSelectionAnnotation = 1;

class BLSelectionObject : public HostObject<BLSelectionObject, BLSelection> {
public:
    explicit BLSelectionObject(std::uint32_t kind);

private:
    ResultCode GetKind(std::uint32_t* kind) const;

    std::uint32_t kind_;
};

class BLDocumentViewObject : public HostObject<BLDocumentViewObject, BLDocumentView> {
public:
    // The annotation with the input focus, and its page.
    struct Focus {
        std::uint32_t page = kPDNoPage;
        Documents::AnnotationRef annotation;
    };

    // `document` may be empty, for a view without a document.
    BLDocumentViewObject(HostStatePtr state, BasicServiceObjectPtr<BLDocumentObject> document);

    // Registers the view with its document. To be called once, on the complete object.
    void Connect();

    // Null when the view shows no document.
    BLDocumentObject* Document() const noexcept { return document_.Get(); }

    // The last go-to request; nullopt before the first.
    std::optional<BLGoToRequest> LastTarget() const;

    // Number of go-to requests so far.
    std::uint64_t TargetCount() const noexcept { return targetCount_; }

    // The annotation is empty when none is focused. [any-thread]
    Focus FocusedAnnotation() const;

    // "2_1": page and present position of the focused annotation. [ui-thread]
    std::optional<std::string> FocusedPlace() const;

    // The last argument of ShowHighlight; empty at first.
    const BasicServiceObjectPtr<ServiceObject>& Highlight() const noexcept { return highlight_; }

    // Focuses an annotation, or none (empty annotation). When the focus changes, fires
    // OnInputHandleFocusAnnot and OnSelectionChanged before it returns. [ui-thread]
    void SetFocus(std::uint32_t page, Documents::AnnotationRef annotation);

    // The same for an annotation, but fires the events also when it is focused already, because
    // subscribers may have selected another one since. [ui-thread]
    void FocusAnew(std::uint32_t page, Documents::AnnotationRef annotation);

    // Sets the callback for go-to requests and focus changes, called on the thread of the change;
    // empty removes it.
    void SetChangeCallback(std::function<void()> callback) { changed_ = std::move(callback); }

    // Adjusts the focus to a change of the document: its page index shifts with the pages, and it
    // is cleared with its annotation or page. Returns true when it was cleared; the caller then
    // fires the event. [any-thread]
    bool AdjustFocus(const Documents::Change& change);

    // Fires the events of a focus change. [any-thread]
    void FireFocus(std::uint32_t page, _PDAnnotRec* annotation);

private:
    ResultCode GetDocument(BLDocument** document) const;
    ResultCode IsReadOnly(bool* readOnly) const;
    ResultCode GetInteractionFlags(std::uint32_t* flags) const;
    ResultCode GoTo(const BLGoToRequest* request);
    ResultCode FocusAnnotation(std::uint32_t pageIndex, _PDAnnotRec* annotation);
    ResultCode IsPermitted(std::uint32_t subject, std::uint32_t operation, std::uint32_t scope,
                           bool* permitted) const;
    ResultCode EndEditing(std::uint32_t keepChange);
    ResultCode ClearSelection(std::uint32_t keepFocus);
    ResultCode GetPageScale(std::uint32_t pageIndex, double* scale) const;
    ResultCode GetPageRotation(std::uint32_t pageIndex, std::uint32_t* degrees) const;
    ResultCode ShowHighlight(ServiceObject* highlight);
    ResultCode GetViewNumber(std::uint64_t* number) const;

    void TellChange() const;
    // Returns whether the focus has changed.
    bool StoreFocus(std::uint32_t page, Documents::AnnotationRef annotation);
    void CheckPage(std::uint32_t pageIndex) const;

    const HostStatePtr state_;
    const BasicServiceObjectPtr<BLDocumentObject> document_;
    const std::uint64_t number_;
    std::optional<BLGoToRequest> target_;
    std::uint64_t targetCount_ = 0;
    BasicServiceObjectPtr<ServiceObject> highlight_;
    std::function<void()> changed_;

    mutable std::mutex focusMutex_;
    Focus focus_;
};

}  // namespace Workbench
