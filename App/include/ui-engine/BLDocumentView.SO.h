// Interface `BLDocumentView`: a view of an open document, and the selection in it. Implemented by
// the host. Methods are called on the UI thread unless said otherwise [ui-thread]; events are
// fired on any thread.
#pragma once

#include "pdf-library/PDTypes.h"
#include "ui-engine/SOEvent.h"

#include <cstdint>

struct BLDocument;

// Layouts that are the host's own; passed by events that the panel does not read.
struct _BLPageRange;
struct BLScrollState;
enum class BLZoomType : std::uint32_t {};
enum class BLScrollBarType : std::uint32_t {};

// What is selected in a view.
struct BLSelection : ServiceObject {
    static constexpr const char* kName = "BLSelection";
    static constexpr const char* kHeader = "include/ui-engine/BLDocumentView.SO.h";

    SO_METHOD(BLSelection, GetKind, 0, std::uint32_t* kind);

    using Catalogue = SODetails::MethodCatalogue<GetKind>;
};

// How a go-to request places its target.
inline constexpr std::uint32_t kGoToModeRectangle = 4;  // scroll so that the rectangle is in sight

struct BLGoToRequest {
    std::uint32_t pageIndex;  // 0-based
    std::uint32_t mode;       // kGoToMode...
    _PDRect target;           // default user space of the page, in points; may have no size
};
static_assert(sizeof(BLGoToRequest) == 40);

// Interaction flags. Bit 0: the view must not be navigated now.
inline constexpr std::uint32_t kInteractionLocked = 1;

// The permission query that DeleteAnnot makes: may annotations be deleted, by the user, here?
inline constexpr std::uint32_t kPermissionSubjectAnnotation = 4;
inline constexpr std::uint32_t kPermissionOperationDelete = 2;
inline constexpr std::uint32_t kPermissionScopeUser = 1;

struct BLDocumentView : ServiceObject {
    static constexpr const char* kName = "BLDocumentView";
    static constexpr const char* kHeader = "include/ui-engine/BLDocumentView.SO.h";

    // The document shown, owned; null when there is none. [any-thread]
    SO_METHOD(BLDocumentView, GetDocument, 0, BLDocument** document);
    // Whether the document may not be changed through this view.
    SO_METHOD(BLDocumentView, IsReadOnly, 1, bool* readOnly);
    SO_METHOD(BLDocumentView, GetInteractionFlags, 2, std::uint32_t* flags);
    SO_METHOD(BLDocumentView, GoTo, 3, const BLGoToRequest* request);
    // Gives the annotation the input focus; borrowed.
    SO_METHOD(BLDocumentView, FocusAnnotation, 4, std::uint32_t pageIndex, _PDAnnotRec* annotation);
    // The codes are kPermission...
    SO_METHOD(BLDocumentView, IsPermitted, 5, std::uint32_t subject, std::uint32_t operation,
              std::uint32_t scope, bool* permitted);
    // Ends what the user is editing in the view: 1 keeps the change, 0 drops it.
    SO_METHOD(BLDocumentView, EndEditing, 8, std::uint32_t keepChange);
    // Empties the selection; 1 leaves the annotation focus alone, 0 takes it away too.
    SO_METHOD(BLDocumentView, ClearSelection, 9, std::uint32_t keepFocus);
    // A page's scale (1: 72 points an inch) and clockwise rotation in degrees, as shown.
    SO_METHOD(BLDocumentView, GetPageScale, 10, std::uint32_t pageIndex, double* scale);
    SO_METHOD(BLDocumentView, GetPageRotation, 11, std::uint32_t pageIndex, std::uint32_t* degrees);
    // Shows what BLAnnotNavigator::BuildHighlight made; borrowed.
    SO_METHOD(BLDocumentView, ShowHighlight, 12, ServiceObject* highlight);
    // A number that names the view for the life of the process.
    SO_METHOD(BLDocumentView, GetViewNumber, 13, std::uint64_t* number);

    SO_EVENT(BLDocumentView, OnLayoutChanged, 6, unsigned int layout);
    SO_EVENT(BLDocumentView, OnFocusPageChanged, 20, unsigned int pageIndex);
    SO_EVENT(BLDocumentView, OnVisibleRangeChanged, 25, const _BLPageRange* range);
    SO_EVENT(BLDocumentView, OnPagesChanged, 28, PDPageOperation operation,
             const _PDPageRange* range);
    SO_EVENT(BLDocumentView, OnZoomChanged, 42, BLZoomType type, float factor);
    SO_EVENT(BLDocumentView, OnSelectionChanged, 51, BLSelection* selection);
    SO_EVENT(BLDocumentView, OnAvailableOperationsChanged, 54, unsigned int operations);
    SO_EVENT(BLDocumentView, OnActiveToolChanged, 94, unsigned int tool);
    // The view gave an annotation the input focus; null and kPDNoPage when none has it.
    SO_EVENT(BLDocumentView, OnInputHandleFocusAnnot, 99, unsigned int pageIndex,
             _PDAnnotRec* annotation);
    SO_EVENT(BLDocumentView, OnScrollChanged, 126, BLScrollBarType type,
             const BLScrollState* state);
    SO_EVENT(BLDocumentView, OnViewRulerStateChanged, 182, bool shown);
    SO_EVENT(BLDocumentView, OnViewGridStateChanged, 185, bool shown);
    SO_EVENT(BLDocumentView, OnLockedStateChanged, 188, unsigned int state);
    SO_EVENT(BLDocumentView, OnViewStateChanged, 199, unsigned int state);

    using Catalogue = SODetails::MethodCatalogue<
        GetDocument, IsReadOnly, GetInteractionFlags, GoTo, FocusAnnotation, IsPermitted,
        EndEditing, ClearSelection, GetPageScale, GetPageRotation, ShowHighlight, GetViewNumber,
        OnLayoutChanged, OnFocusPageChanged, OnVisibleRangeChanged, OnPagesChanged, OnZoomChanged,
        OnSelectionChanged, OnAvailableOperationsChanged, OnActiveToolChanged,
        OnInputHandleFocusAnnot, OnScrollChanged, OnViewRulerStateChanged, OnViewGridStateChanged,
        OnLockedStateChanged, OnViewStateChanged>;
};
