// Adapter that makes a class a `UIInplacePlugin`. Its thunks contain no exception handler:
// ServiceObjectException passes to the host. [ui-thread]
#pragma once

#include "ui-engine/UIHandler.SO.h"
#include "ui-engine/UIInplacePlugin.SO.h"
#include "ui-engine/internal/InterfaceAdapter.h"
#include "ui/UIDocumentPanelModel.SO.h"

namespace SOImpl {

template <class T, class Traits>
class CppUIInplacePluginBase : public SODetails::InterfaceAdapter<T, Traits, UIInplacePlugin> {
protected:
    CppUIInplacePluginBase()
    {
        this->template FillTable<HandshakeImpl, RegisterResourcesImpl, InitBeginImpl, InitHtmlImpl,
                                 InitSubscriptionImpl, InitHandlerImpl, InitCompleteImpl,
                                 CreateControlImpl, GetUIModelImpl, CleanupImpl>();
    }
    ~CppUIInplacePluginBase() = default;

private:
    template <class Impl, class M>
    using Thunk = SODetails::MethodThunk<Impl, T, Traits, M, SODetails::PassExceptions>;

    // ResultCode InitBegin(UIWnd* window, ServiceObject& hostContext)
    struct InitBeginImpl : Thunk<InitBeginImpl, UIInplacePlugin::InitBegin> {
        static ResultCode Unpack(T& object, const UIInitBeginArguments* arguments)
        {
            if (arguments == nullptr || arguments->hostContext == nullptr) {
                return kResultNullArgument;
            }
            return object.InitBegin(arguments->window, *arguments->hostContext);
        }
    };

    // ResultCode InitHtml()
    struct InitHtmlImpl : Thunk<InitHtmlImpl, UIInplacePlugin::InitHtml> {
        static ResultCode Unpack(T& object, const UIInitHtmlArguments* arguments)
        {
            if (arguments == nullptr || arguments->first == nullptr ||
                arguments->second == nullptr) {
                return kResultNullArgument;
            }
            return object.InitHtml();
        }
    };

    // BasicServiceObjectPtr<UIHandler> InitHandler()
    struct InitHandlerImpl : Thunk<InitHandlerImpl, UIInplacePlugin::InitHandler> {
        static ResultCode Unpack(T& object, const UIInitHandlerArguments* arguments)
        {
            if (arguments == nullptr || arguments->handler == nullptr) {
                return kResultNullArgument;
            }
            *arguments->handler = object.InitHandler().Detach();
            return kResultOk;
        }
    };

    // BasicServiceObjectPtr<UIDocumentPanelModel> GetUIModel()
    struct GetUIModelImpl : Thunk<GetUIModelImpl, UIInplacePlugin::GetUIModel> {
        static ResultCode Unpack(T& object, const UIGetUIModelArguments* arguments)
        {
            if (arguments == nullptr || arguments->model == nullptr) {
                return kResultNullArgument;
            }
            *arguments->model = object.GetUIModel().Detach();
            return kResultOk;
        }
    };

// A slot without arguments: ResultCode name()
#define SOIMPL_FORWARD(name)                                                                       \
    struct name##Impl : Thunk<name##Impl, UIInplacePlugin::name> {                                 \
        static ResultCode Unpack(T& object) { return object.name(); }                              \
    }
    SOIMPL_FORWARD(Handshake);
    SOIMPL_FORWARD(RegisterResources);
    SOIMPL_FORWARD(InitSubscription);
    SOIMPL_FORWARD(InitComplete);
    SOIMPL_FORWARD(CreateControl);
    SOIMPL_FORWARD(Cleanup);
#undef SOIMPL_FORWARD
};

}  // namespace SOImpl
