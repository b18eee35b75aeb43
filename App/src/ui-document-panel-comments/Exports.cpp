#include "Exports.h"

#include "platform/ModuleInstance.h"
#include "service-common/ServiceObjectPtr.h"
#include "ui-engine/UIEngine.SO.h"

namespace {

bool g_resourcesRegistered = false;

}  // namespace

ResultCode ReflectServiceObjectInfo(const ServiceObjectInfo** entries, std::uint32_t* count)
{
    return SODetails::ReflectRegisteredObjects(entries, count);
}

ResultCode CreateServiceObject(Atom name, ServiceObject** object)
{
    return SODetails::CreateRegisteredObject(name, object);
}

ResultCode RegisterResources(UIEngine* engine)
{
    return RegisterModuleResources(engine);
}

ResultCode RegisterModuleResources(UIEngine* engine)
{
    if (engine == nullptr) {
        return kResultNullArgument;
    }
    if (g_resourcesRegistered) {
        return kResultOk;
    }
    BasicServiceObjectPtr<UIResourceRegistration> registration;
    CallMethod<UIEngine::CreateRegistration>(engine, Platform::CurrentModuleInstance(),
                                             registration.Receive());
    if (!registration) {
        return kResultOk;
    }
    CallMethod<UIEngine::Register>(engine, registration.Get());
    g_resourcesRegistered = true;
    return kResultOk;
}
