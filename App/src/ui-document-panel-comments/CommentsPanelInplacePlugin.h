// The module's public service object: the host creates it by name and drives it from Handshake to
// Cleanup. Owns one panel handler and one panel model, made together on demand. Tolerates any
// order of calls. [ui-thread]
#pragma once

#include "ui-engine/internal/CppUIInplacePluginBase.h"

class CommentsPanelHandler;
class CommentsPanelModel;

class CommentsPanelInplacePlugin
    : public SOImpl::CppUIInplacePluginBase<CommentsPanelInplacePlugin,
                                            SODetails::ServiceObjectTraits> {
public:
    CommentsPanelInplacePlugin();
    ~CommentsPanelInplacePlugin();

    ResultCode Handshake() { return kResultOk; }
    // Throws ServiceObjectException when the host's "UIEngine" cannot be had or fails.
    ResultCode RegisterResources();
    // Keeps the window only when it is a valid `UIWnd`.
    ResultCode InitBegin(UIWnd* window, ServiceObject& hostContext);
    ResultCode InitHtml() { return kResultDeclined; }
    ResultCode InitSubscription() { return kResultDeclined; }
    BasicServiceObjectPtr<UIHandler> InitHandler();
    ResultCode InitComplete() { return kResultOk; }
    ResultCode CreateControl() { return kResultDeclined; }
    BasicServiceObjectPtr<UIDocumentPanelModel> GetUIModel();
    ResultCode Cleanup();

private:
    void CreatePanelObjects();

    ServiceObject* hostContext_ = nullptr;  // borrowed until Cleanup
    UIWnd* window_ = nullptr;               // borrowed until Cleanup
    // Destroyed in reverse: the model first, then the handler.
    BasicServiceObjectPtr<CommentsPanelHandler> handler_;
    BasicServiceObjectPtr<CommentsPanelModel> model_;
};
