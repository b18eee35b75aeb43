// The library under test: loading, exports, embedded files and unloading, and what the process says
// about itself meanwhile.
#pragma once

#include "Contract.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Conformance {

class ModuleLibrary {
public:
    // Fails with std::runtime_error when the file is no library.
    explicit ModuleLibrary(const std::string& file);
    ~ModuleLibrary();
    ModuleLibrary(const ModuleLibrary&) = delete;
    ModuleLibrary& operator=(const ModuleLibrary&) = delete;

    // Null when the library does not export the name.
    void* Export(const char* name) const;

    // The three exports; the library must have them.
    std::uint32_t Reflect(const ReflectedObject** entries, std::uint32_t* count) const;
    std::uint32_t Create(std::uint32_t atom, void** object) const;
    std::uint32_t RegisterResources(void* engine) const;

    // Whether the file has left the process.
    bool Unload();

    // What the module registered its resources with; null before.
    void* instance = nullptr;

private:
    std::string file_;
    void* handle_;
};

// A file that a library carries, found by its instance; empty when there is none.
std::string_view FindEmbeddedFile(void* instance, const char* type, const char* name);

// Threads of this process.
std::size_t CountThreads();
// Bytes of memory that this process has in use; 0 where a sanitizer has taken the heap over.
std::size_t MemoryInUse();

}  // namespace Conformance
