// A loaded module library: its three exports, and unloading. [ui-thread]
#pragma once

#include "service-common/ServiceObjectPtr.h"
#include "ui-engine/ModuleExports.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace Workbench {

class ModuleLibrary {
public:
    // Throws std::runtime_error, naming the file, when it cannot be loaded or lacks an export.
    explicit ModuleLibrary(const std::filesystem::path& file);
    ~ModuleLibrary();
    ModuleLibrary(const ModuleLibrary&) = delete;
    ModuleLibrary& operator=(const ModuleLibrary&) = delete;

    // Names of the service objects in the module's registry.
    std::vector<std::string> ObjectNames() const;

    // Creates an object by name. Throws std::runtime_error when the module returns none.
    BasicServiceObjectPtr<ServiceObject> Create(const std::string& name) const;

    // Unloads the library. Returns whether it has left the process; another part of the process may
    // have loaded it too. A second call does nothing.
    bool Unload();

private:
    template <class Function>
    Function Export(const char* name) const;

    std::filesystem::path file_;
    void* handle_ = nullptr;
    ReflectServiceObjectInfoExport reflect_ = nullptr;
    CreateServiceObjectExport create_ = nullptr;
};

// The folder of the running program.
std::filesystem::path ProgramFolder();

}  // namespace Workbench
