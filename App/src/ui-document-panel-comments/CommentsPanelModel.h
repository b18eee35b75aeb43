// The panel's model: hands the host's documents collection to the panel handler and declines
// everything else. Does not keep the handler alive. [ui-thread]
#pragma once

#include "CommentsPanelHandler.h"

#include "ui-engine/internal/CppUIDocumentPanelModelBase.h"
#include "ui-engine/internal/EventTask.h"

class CommentsPanelModel
    : public SOImpl::CppUIDocumentPanelModelBase<CommentsPanelModel,
                                                 SODetails::ServiceObjectTraits> {
public:
    // Takes a weak reference; the strong one goes at once.
    explicit CommentsPanelModel(const BasicServiceObjectPtr<CommentsPanelHandler>& handler)
        : handler_(WeakServiceObjectPtr<CommentsPanelHandler>::Require(handler.Get()))
    {
    }

    // Posts; where the host takes no posted calls, the failure is the thread's last error.
    ResultCode SetDocumentsCollection(UIDocumentsCollection* collection)
    {
        SODetails::RunEventTask("CommentsPanelModel::SetDocumentsCollection", [&] {
            if (const auto handler = handler_.Lock()) {
                handler->SetDocumentsCollection(collection);
            }
        });
        return kResultOk;
    }

private:
    WeakServiceObjectPtr<CommentsPanelHandler> handler_;
};
