#include "platform/EmbeddedResources.h"

#include <windows.h>

namespace Platform {

ResourceBytes FindEmbeddedResource(ModuleInstance library, const char* type, const char* name)
{
    if (library == nullptr || type == nullptr || name == nullptr) {
        return {};
    }
    const auto module = static_cast<HMODULE>(library);
    const HRSRC resource = FindResourceA(module, name, type);
    const HGLOBAL loaded = resource == nullptr ? nullptr : LoadResource(module, resource);
    const void* bytes = loaded == nullptr ? nullptr : LockResource(loaded);
    if (bytes == nullptr) {
        return {};
    }
    return {static_cast<const unsigned char*>(bytes), SizeofResource(module, resource)};
}

}  // namespace Platform
