// Interfaces `BLDocumentView` and `BLSelection`: a view of an open document, and the selection in
// it. Implemented by the host. Methods are called on the UI thread unless said otherwise
// [ui-thread]; events are fired on any thread.
#pragma once

#include "pdf-library/PDTypes.h"
#include "ui-engine/SOEvent.h"

#include <cstdint>

struct BLDocument;

// Layouts that are the host's own; passed by events that the panel does not read.
struct _BLPageRange;
struct BLScrollState;

// How a view's zoom was chosen, in numbers of the host's.
enum class BLZoomType : std::uint32_t {};

// One of a view's scroll bars, in numbers of the host's.
enum class BLScrollBarType : std::uint32_t {};

// What is selected in a view. Passed by an event; the panel keeps a weak reference and calls
// nothing.
struct BLSelection : ServiceObject {
    static constexpr const char* kName = "BLSelection";
    static constexpr const char* kHeader = "include/ui-engine/BLDocumentView.SO.h";

    // What kind of things is selected, in numbers of the host's.
    SO_METHOD(BLSelection, GetKind, 0, std::uint32_t* kind);

    using Catalogue = SODetails::MethodCatalogue<GetKind>;
};

// How a go-to request places its target.
inline constexpr std::uint32_t kGoToModeRectangle = 4;  // scroll so that the rectangle is in sight

// A place of the document that a view is asked to show.
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

// A view of an open document. The low 32 bits of its address, as a signed number, are the key of
// the panel's list for it: they stay the same, and are no other view's, for as long as it is open.
struct BLDocumentView : ServiceObject {
    static constexpr const char* kName = "BLDocumentView";
    static constexpr const char* kHeader = "include/ui-engine/BLDocumentView.SO.h";

    // The document shown, owned; null when there is none. [any-thread]
    SO_METHOD(BLDocumentView, GetDocument, 0, BLDocument** document);
    // Whether the document may not be changed through this view. Asked when the list is bound
    // to the view.
    SO_METHOD(BLDocumentView, IsReadOnly, 1, bool* readOnly);
    // Whether the view can be navigated now (kInteraction...).
    SO_METHOD(BLDocumentView, GetInteractionFlags, 2, std::uint32_t* flags);
    // Shows a place; `request` is borrowed for the call. Fails with 9 for a page that the document
    // does not have.
    SO_METHOD(BLDocumentView, GoTo, 3, const BLGoToRequest* request);
    // Gives the annotation the input focus; borrowed for the call. The change is told by
    // OnInputHandleFocusAnnot.
    SO_METHOD(BLDocumentView, FocusAnnotation, 4, std::uint32_t pageIndex, _PDAnnotRec* annotation);
    // Whether an operation is permitted; subject, operation and scope are kPermission... numbers.
    // A host without the method permits; one that fails does not.
    SO_METHOD(BLDocumentView, IsPermitted, 5, std::uint32_t subject, std::uint32_t operation,
              std::uint32_t scope, bool* permitted);
    // Ends what the user is editing in the view: 1 keeps the change, 0 drops it.
    SO_METHOD(BLDocumentView, EndEditing, 8, std::uint32_t keepChange);
    // Empties the selection; 1 leaves the annotation focus alone, 0 takes it away too.
    SO_METHOD(BLDocumentView, ClearSelection, 9, std::uint32_t keepFocus);
    // A page's scale as shown; 1: 72 points an inch. Fails with 9 for a page that the document does
    // not have.
    SO_METHOD(BLDocumentView, GetPageScale, 10, std::uint32_t pageIndex, double* scale);
    // A page's clockwise rotation in degrees as shown. Fails with 9 for a page that the document
    // does not have.
    SO_METHOD(BLDocumentView, GetPageRotation, 11, std::uint32_t pageIndex, std::uint32_t* degrees);
    // Shows what BLAnnotNavigator::BuildHighlight made; borrowed, the view takes a reference of its
    // own.
    SO_METHOD(BLDocumentView, ShowHighlight, 12, ServiceObject* highlight);
    // A number that names the view for the life of the process; needs no release.
    SO_METHOD(BLDocumentView, GetViewNumber, 13, std::uint64_t* number);

    // Fired when the arrangement of the pages changed; `layout` is the host's own number. The panel
    // does not act on it.
    SO_EVENT(BLDocumentView, OnLayoutChanged, 6, unsigned int layout);
    // Fired when another page, given by its 0-based index, is the current one of the view. The
    // panel does not act on it.
    SO_EVENT(BLDocumentView, OnFocusPageChanged, 20, unsigned int pageIndex);
    // Fired when other pages are in sight; `range` is the host's own, borrowed for the call. The
    // panel does not act on it.
    SO_EVENT(BLDocumentView, OnVisibleRangeChanged, 25, const _BLPageRange* range);
    // Fired as BLDocument::OnPagesChanged is, for this view; `range` is borrowed for the call. The
    // panel acts on the document's event.
    SO_EVENT(BLDocumentView, OnPagesChanged, 28, PDPageOperation operation,
             const _PDPageRange* range);
    // Fired when the zoom changed; `factor` 1 is actual size. The panel does not act on it.
    SO_EVENT(BLDocumentView, OnZoomChanged, 42, BLZoomType type, float factor);
    // Fired when something else is selected; `selection` is borrowed for the call and may be null.
    SO_EVENT(BLDocumentView, OnSelectionChanged, 51, BLSelection* selection);
    // Fired when other operations can be done; `operations` is the host's own number. The panel
    // does not act on it.
    SO_EVENT(BLDocumentView, OnAvailableOperationsChanged, 54, unsigned int operations);
    // Fired when another tool is in use; `tool` is the host's own number. The panel does not act on
    // it.
    SO_EVENT(BLDocumentView, OnActiveToolChanged, 94, unsigned int tool);
    // Fired when the view gave an annotation the input focus: its 0-based page index and the
    // annotation, borrowed for the call; kPDNoPage and null when none has it. The panel makes its
    // item current.
    SO_EVENT(BLDocumentView, OnInputHandleFocusAnnot, 99, unsigned int pageIndex,
             _PDAnnotRec* annotation);
    // Fired when the view was scrolled; type and state are the host's own, `state` is borrowed for
    // the call. The panel does not act on it.
    SO_EVENT(BLDocumentView, OnScrollChanged, 126, BLScrollBarType type,
             const BLScrollState* state);
    // Fired when the rulers were shown or hidden. The panel does not act on it.
    SO_EVENT(BLDocumentView, OnViewRulerStateChanged, 182, bool shown);
    // Fired when the grid was shown or hidden. The panel does not act on it.
    SO_EVENT(BLDocumentView, OnViewGridStateChanged, 185, bool shown);
    // Fired when the view was locked or unlocked; `state` is the host's own number. The panel does
    // not act on it.
    SO_EVENT(BLDocumentView, OnLockedStateChanged, 188, unsigned int state);
    // Fired when the state of the view changed; `state` is the host's own number. The panel does
    // not act on it.
    SO_EVENT(BLDocumentView, OnViewStateChanged, 199, unsigned int state);

    using Catalogue = SODetails::MethodCatalogue<
        GetDocument, IsReadOnly, GetInteractionFlags, GoTo, FocusAnnotation, IsPermitted,
        EndEditing, ClearSelection, GetPageScale, GetPageRotation, ShowHighlight, GetViewNumber,
        OnLayoutChanged, OnFocusPageChanged, OnVisibleRangeChanged, OnPagesChanged, OnZoomChanged,
        OnSelectionChanged, OnAvailableOperationsChanged, OnActiveToolChanged,
        OnInputHandleFocusAnnot, OnScrollChanged, OnViewRulerStateChanged, OnViewGridStateChanged,
        OnLockedStateChanged, OnViewStateChanged>;
};
