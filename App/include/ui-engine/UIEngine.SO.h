// Interface `UIEngine` and the objects that it hands out: the host's user-interface engine, listed
// by the service provider. Modules register their resources with it; resources are then read by
// path. Implemented by the host.
#pragma once

#include "platform/ModuleInstance.h"
#include "service-common/ServiceMethod.h"

#include <cstdint>

// A module's resources on their way into the engine. Opaque to the module. [ui-thread]
struct UIResourceRegistration : ServiceObject {
    static constexpr const char* kName = "UIResourceRegistration";
    static constexpr const char* kHeader = "include/ui-engine/UIEngine.SO.h";

    // The module whose resources it stands for, as CreateRegistration was given it. For the host's
    // own use.
    SO_METHOD(UIResourceRegistration, GetModuleInstance, 0, Platform::ModuleInstance* instance);

    using Catalogue = SODetails::MethodCatalogue<GetModuleInstance>;
};

// One resource. [any-thread]
struct UIResource : ServiceObject {
    static constexpr const char* kName = "UIResource";
    static constexpr const char* kHeader = "include/ui-engine/UIEngine.SO.h";

    // Its bytes and their number, borrowed for as long as the resource is held.
    SO_METHOD(UIResource, GetData, 0, const std::uint8_t** data, std::uint32_t* size);

    using Catalogue = SODetails::MethodCatalogue<GetData>;
};

// The resources of all registered modules. [any-thread]
struct UIResources : ServiceObject {
    static constexpr const char* kName = "UIResources";
    static constexpr const char* kHeader = "include/ui-engine/UIEngine.SO.h";

    // The resource at a lower-case path ("document-panel-comments/panel.htm", UTF-16,
    // zero-terminated), owned; 0 with null when there is none.
    SO_METHOD(UIResources, GetResource, 0, const char16_t* path, UIResource** resource);

    using Catalogue = SODetails::MethodCatalogue<GetResource>;
};

// The engine, listed by the service provider as "UIEngine".
struct UIEngine : ServiceObject {
    static constexpr const char* kName = "UIEngine";
    static constexpr const char* kHeader = "include/ui-engine/UIEngine.SO.h";

    // The resources of all modules, owned. Asked for with each template that is filled.
    // [any-thread]
    SO_METHOD(UIEngine, GetResources, 0, UIResources** resources);
    // A registration object for a module, owned; null: nothing is registered, and a later call
    // tries again. [ui-thread]
    SO_METHOD(UIEngine, CreateRegistration, 4, Platform::ModuleInstance instance,
              UIResourceRegistration** registration);
    // Makes the resources of the registration's module reachable; borrowed. Fails with 8 for a
    // module without a table of contents. [ui-thread]
    SO_METHOD(UIEngine, Register, 7, UIResourceRegistration* registration);

    using Catalogue = SODetails::MethodCatalogue<GetResources, CreateRegistration, Register>;
};
