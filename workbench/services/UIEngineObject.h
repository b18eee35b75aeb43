// The host's "UIEngine" and the objects that it returns: module registrations, the resources of all
// modules, and single resources.
#pragma once

#include "services/HostObject.h"
#include "services/ResourceStore.h"
#include "ui-engine/UIEngine.SO.h"

namespace Workbench {

class UIResourceRegistrationObject
    : public HostObject<UIResourceRegistrationObject, UIResourceRegistration> {
public:
    explicit UIResourceRegistrationObject(Platform::ModuleInstance module);

private:
    ResultCode GetModuleInstance(Platform::ModuleInstance* instance) const;

    Platform::ModuleInstance module_;
};

class UIResourceObject : public HostObject<UIResourceObject, UIResource> {
public:
    explicit UIResourceObject(Platform::ResourceBytes bytes);

private:
    ResultCode GetData(const std::uint8_t** data, std::uint32_t* size) const;

    Platform::ResourceBytes bytes_;
};

class UIResourcesObject : public HostObject<UIResourcesObject, UIResources> {
public:
    UIResourcesObject();

private:
    ResultCode GetResource(const char16_t* path, UIResource** resource) const;
};

class UIEngineObject : public HostObject<UIEngineObject, UIEngine> {
public:
    UIEngineObject();

private:
    ResultCode GetResources(UIResources** resources) const;
    ResultCode CreateRegistration(Platform::ModuleInstance instance,
                                  UIResourceRegistration** registration) const;
    ResultCode Register(UIResourceRegistration* registration) const;

    BasicServiceObjectPtr<UIResourcesObject> resources_;
};

}  // namespace Workbench
