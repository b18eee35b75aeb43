// The files of all registered modules, by path. One store for the process, as a module registers
// itself once in its life, whichever host it meets. [any-thread]
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

    // Makes the files of a module's table of contents reachable; a second time does nothing. A
    // path that an earlier module has too stays the earlier module's. False when the module has no
    // table of contents.
    bool Register(Platform::ModuleInstance module);

    // To be called when a module has left the process.
    void Forget(Platform::ModuleInstance module);

    // The modules in the order in which they were registered.
    std::vector<Platform::ModuleInstance> Modules() const;

    // The bytes at a lower-case path. `data` is null when there is no such file.
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
