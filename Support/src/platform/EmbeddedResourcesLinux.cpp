#include "platform/EmbeddedResources.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstring>
#include <tuple>

namespace Platform {
namespace {

constexpr const char* kTableSymbol = "UiDataEmbeddedResources";

const EmbeddedResourceTable* TableOf(ModuleInstance library)
{
    Dl_info info{};
    if (library == nullptr || dladdr(library, &info) == 0 || info.dli_fname == nullptr ||
        info.dli_fbase != library) {
        return nullptr;
    }
    // The library stays loaded by its loader; this handle only looks symbols up.
    void* handle = dlopen(info.dli_fname, RTLD_LAZY | RTLD_NOLOAD);
    if (handle == nullptr) {
        return nullptr;
    }
    const auto* table = static_cast<const EmbeddedResourceTable*>(dlsym(handle, kTableSymbol));
    dlclose(handle);
    return table;
}

bool Precedes(const EmbeddedResource& resource, const char* type, const char* name)
{
    const int order = std::strcmp(resource.type, type);
    return order != 0 ? order < 0 : std::strcmp(resource.name, name) < 0;
}

}  // namespace

ResourceBytes FindEmbeddedResource(ModuleInstance library, const char* type, const char* name)
{
    const EmbeddedResourceTable* table = TableOf(library);
    if (table == nullptr || type == nullptr || name == nullptr) {
        return {};
    }
    const EmbeddedResource* end = table->entries + table->count;
    const EmbeddedResource* found = std::lower_bound(
        table->entries, end, name, [type](const EmbeddedResource& resource, const char* wanted) {
            return Precedes(resource, type, wanted);
        });
    if (found == end || std::strcmp(found->type, type) != 0 ||
        std::strcmp(found->name, name) != 0) {
        return {};
    }
    return {found->data, found->size};
}

}  // namespace Platform
