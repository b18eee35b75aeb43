// The host's "BLDocument" over a document of the workbench: pages, the delete command, and the
// events that follow a change. [any-thread] unless said otherwise.
#pragma once

#include "documents/Document.h"
#include "services/HostObject.h"
#include "services/HostState.h"
#include "ui-engine/BLDocument.SO.h"

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace Workbench {

class BLDocumentViewObject;

// Result of a refused command: the document is read-only, permission is missing, or the annotation
// is locked.
inline constexpr ResultCode kResultCommandRefused = 0x30001;

class BLDocumentObject : public HostObject<BLDocumentObject, BLDocument> {
public:
    BLDocumentObject(HostStatePtr state, std::shared_ptr<Documents::Document> content);

    Documents::Document& Content() const noexcept { return *content_; }

    // Publishes an edit of the content: the views are adjusted at once, the events are fired on the
    // thread that the host's state selects, before this returns or later. Returns the edit's error,
    // empty on success.
    std::string Publish(Documents::EditResult edit);

    using EditCallback = std::function<void(const std::vector<Documents::Change>&)>;

    // Called after the events of an edit have been fired or handed to the foreign thread, on the
    // thread that publishes the edit; empty removes it. To be set before the first edit.
    void SetEditCallback(EditCallback callback) { editCallback_ = std::move(callback); }

    // Registers a view, which is adjusted to changes until it is destroyed. Held weakly.
    void AddView(BLDocumentViewObject& view);

private:
    using Firings = std::vector<std::function<void()>>;

    ResultCode GetPageCount(std::int32_t* count) const;
    ResultCode AcquirePage(std::uint32_t index, _PDPageRec** page) const;
    ResultCode ExecuteCommand(Atom command, const void* arguments);

    void DeleteAnnotation(const BLAnnotCommandArguments& arguments);
    void AppendFirings(Firings& firings, const Documents::Change& change);
    std::vector<BasicServiceObjectPtr<BLDocumentViewObject>> LivingViews();

    const HostStatePtr state_;
    const std::shared_ptr<Documents::Document> content_;
    EditCallback editCallback_;
    std::mutex viewsMutex_;
    std::vector<WeakServiceObjectPtr<BLDocumentViewObject>> views_;
};

}  // namespace Workbench
