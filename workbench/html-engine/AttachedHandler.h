// The engine's side of a handler that is attached to an element. The engine itself raises no
// events; it keeps handlers with their elements, says which ones an event passes on its way up
// (`Document::HandlersOf`), and notifies each when its attachment ends. UI thread.
#pragma once

#include "html-engine/Types.h"

namespace HtmlEngine {

class AttachedHandler {
public:
    AttachedHandler() = default;
    AttachedHandler(const AttachedHandler&) = delete;
    AttachedHandler& operator=(const AttachedHandler&) = delete;
    virtual ~AttachedHandler() = default;

    // The attachment to `element` has ended: the element left the tree, the page was loaded anew,
    // the document is being destroyed, or `Document::DetachHandler` was called. Called exactly once
    // per attachment, after the operation that caused it is complete, in document order where one
    // operation ends several attachments.
    //
    // The tree may be changed and handlers may be attached from here. The handle tells which
    // attachment it was; it is known only if the element had uses (or is still in the tree, after
    // `DetachHandler`). [ui-thread] Must not throw.
    virtual void OnDetached(ElementHandle element) noexcept = 0;
};

}  // namespace HtmlEngine
