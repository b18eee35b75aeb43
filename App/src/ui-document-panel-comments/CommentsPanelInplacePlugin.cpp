#include "CommentsPanelInplacePlugin.h"

#include "CommentsPanelHandler.h"
#include "CommentsPanelModel.h"
#include "Exports.h"
#include "SubtypeTable.h"

#include "pdf-library/PDModelService.SO.h"
#include "service-common/ServiceObjectRegistry.h"
#include "service-common/ServiceProvider.h"
#include "ui-engine/UIEngine.SO.h"
#include "ui-engine/UIWnd.SO.h"

namespace {

const SODetails::ServiceObjectRegistration
    g_registration("CommentsPanelInplacePlugin", []() -> BasicServiceObjectPtr<ServiceObject> {
        auto plugin = SODetails::ServiceObjectCppTheConcrete<CommentsPanelInplacePlugin>::Create();
        return BasicServiceObjectPtr<ServiceObject>::Adopt(plugin.Detach()->AsInterface());
    });

// An object handed to the host: one reference of its own.
template <class I, class T>
BasicServiceObjectPtr<I> HandOut(const BasicServiceObjectPtr<T>& object)
{
    return BasicServiceObjectPtr<I>::Retain(object ? object->AsInterface() : nullptr);
}

}  // namespace

CommentsPanelInplacePlugin::CommentsPanelInplacePlugin()
{
    // Before any container exists, and before a worker asks for them.
    ClassNameOf(kAtomNone);
    SP::ServiceAtom<PDModelService>();
}

CommentsPanelInplacePlugin::~CommentsPanelInplacePlugin() = default;

ResultCode CommentsPanelInplacePlugin::RegisterResources()
{
    const auto engine = SP::QueryServiceObject<UIEngine>();
    if (engine) {
        RegisterModuleResources(engine.Get());
    }
    return kResultOk;
}

ResultCode CommentsPanelInplacePlugin::InitBegin(UIWnd* window, ServiceObject& hostContext)
{
    hostContext_ = &hostContext;
    if (CheckServiceObject(window, UIWnd::kName) == kResultOk) {
        window_ = window;
    }
    return kResultOk;
}

void CommentsPanelInplacePlugin::CreatePanelObjects()
{
    using namespace SODetails;
    try {
        handler_ = ServiceObjectCppTheConcrete<CommentsPanelHandler>::Create();
        model_ = ServiceObjectCppTheConcrete<CommentsPanelModel>::Create(handler_);
    } catch (const std::exception&) {
        // Made together or not at all: the host receives null, and may ask again.
        handler_.Reset();
        model_.Reset();
    }
}

BasicServiceObjectPtr<UIHandler> CommentsPanelInplacePlugin::InitHandler()
{
    if (!handler_) {
        CreatePanelObjects();
    }
    return HandOut<UIHandler>(handler_);
}

BasicServiceObjectPtr<UIDocumentPanelModel> CommentsPanelInplacePlugin::GetUIModel()
{
    if (!model_) {
        CreatePanelObjects();
    }
    return HandOut<UIDocumentPanelModel>(model_);
}

ResultCode CommentsPanelInplacePlugin::Cleanup()
{
    handler_.Reset();
    model_.Reset();
    window_ = nullptr;
    hostContext_ = nullptr;
    return kResultOk;
}
