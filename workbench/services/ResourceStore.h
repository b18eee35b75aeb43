// Resource files of all registered modules by path. One store per process, because a module
// registers itself once, whatever the number of hosts. [any-thread]
#pragma once

#include "platform/EmbeddedResources.h"

#include <shared_mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace Workbench {

class ResourceStore {
public:
    static ResourceStore& Instance();

    // Adds the files of a module's table of contents; a second call for the module does nothing. A
    // path of an earlier module keeps that module's file. False when the module has no table of
    // contents.
    bool Register(Platform::ModuleInstance module);

    // To be called after a module was unloaded.
    void Forget(Platform::ModuleInstance module);

    // The modules in order of registration.
    std::vector<Platform::ModuleInstance> Modules() const;

    // The bytes of the file at a lower-case path; `data` is null when there is none.
    Platform::ResourceBytes Find(std::u16string_view path) const;

private:
    struct File {
        Platform::ModuleInstance module;
        Platform::ResourceBytes bytes;
    };
    struct PathHash {
        using is_transparent = void;
        std::size_t operator()(std::u16string_view path) const noexcept
        {
            return std::hash<std::u16string_view>()(path);
        }
    };

    mutable std::shared_mutex mutex_;
    std::vector<Platform::ModuleInstance> modules_;
    std::unordered_map<std::u16string, File, PathHash, std::equal_to<>> files_;
};

}  // namespace Workbench
