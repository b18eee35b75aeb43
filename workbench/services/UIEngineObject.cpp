#include "services/UIEngineObject.h"

namespace Workbench {

UIResourceRegistrationObject::UIResourceRegistrationObject(Platform::ModuleInstance module)
    : module_(module)
{
    Offer<UIResourceRegistration::GetModuleInstance,
          &UIResourceRegistrationObject::GetModuleInstance>();
}

ResultCode UIResourceRegistrationObject::GetModuleInstance(Platform::ModuleInstance* instance) const
{
    if (instance == nullptr) {
        return kResultNullArgument;
    }
    *instance = module_;
    return kResultOk;
}

UIResourceObject::UIResourceObject(Platform::ResourceBytes bytes) : bytes_(bytes)
{
    Offer<UIResource::GetData, &UIResourceObject::GetData>();
}

ResultCode UIResourceObject::GetData(const std::uint8_t** data, std::uint32_t* size) const
{
    if (data == nullptr || size == nullptr) {
        return kResultNullArgument;
    }
    *data = bytes_.data;
    *size = bytes_.size;
    return kResultOk;
}

UIResourcesObject::UIResourcesObject()
{
    Offer<UIResources::GetResource, &UIResourcesObject::GetResource>();
}

ResultCode UIResourcesObject::GetResource(const char16_t* path, UIResource** resource) const
{
    if (resource == nullptr) {
        return kResultNullArgument;
    }
    *resource = nullptr;
    if (path == nullptr) {
        return kResultNullArgument;
    }
    const Platform::ResourceBytes bytes = ResourceStore::Instance().Find(path);
    if (bytes.data != nullptr) {
        *resource = UIResourceObject::Make(bytes).Detach()->AsInterface();
    }
    return kResultOk;
}

UIEngineObject::UIEngineObject() : resources_(UIResourcesObject::Make())
{
    Offer<UIEngine::GetResources, &UIEngineObject::GetResources>();
    Offer<UIEngine::CreateRegistration, &UIEngineObject::CreateRegistration>();
    Offer<UIEngine::Register, &UIEngineObject::Register>();
}

ResultCode UIEngineObject::GetResources(UIResources** resources) const
{
    if (resources == nullptr) {
        return kResultNullArgument;
    }
    HandOut(resources_, resources);
    return kResultOk;
}

ResultCode UIEngineObject::CreateRegistration(Platform::ModuleInstance instance,
                                              UIResourceRegistration** registration) const
{
    if (registration == nullptr) {
        return kResultNullArgument;
    }
    *registration = nullptr;
    if (instance == nullptr) {
        return kResultNullArgument;
    }
    HandOut(UIResourceRegistrationObject::Make(instance), registration);
    return kResultOk;
}

ResultCode UIEngineObject::Register(UIResourceRegistration* registration) const
{
    if (registration == nullptr) {
        return kResultNullArgument;
    }
    if (const ResultCode code = CheckServiceObject(registration, UIResourceRegistration::kName);
        code != kResultOk) {
        return code;
    }
    Platform::ModuleInstance module = nullptr;
    CallMethodUnchecked<UIResourceRegistration::GetModuleInstance>(registration, &module);
    if (!ResourceStore::Instance().Register(module)) {
        FailCall(kResultNotFound,
                 "the module that registers has no table of contents of resources");
    }
    return kResultOk;
}

}  // namespace Workbench
