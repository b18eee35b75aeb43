#include "ModuleLibrary.h"

#include <filesystem>
#include <stdexcept>
#include <utility>

#if defined(_WIN32)
#include <windows.h>
// After the header that declares the types of the two below.
#include <psapi.h>
#include <tlhelp32.h>
#else
#include <dlfcn.h>
#include <malloc.h>

#include <cstring>
#endif

namespace Conformance {

namespace {

#if defined(_WIN32)

void* LoadFile(const std::string& file)
{
    return LoadLibraryA(file.c_str());
}

void* FindExport(void* handle, const char* name)
{
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle), name));
}

bool UnloadFile(void* handle, const std::string& file)
{
    FreeLibrary(static_cast<HMODULE>(handle));
    return GetModuleHandleA(file.c_str()) == nullptr;
}

#else

void* LoadFile(const std::string& file)
{
    return dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
}

void* FindExport(void* handle, const char* name)
{
    return dlsym(handle, name);
}

bool UnloadFile(void* handle, const std::string& file)
{
    dlclose(handle);
    void* const stillThere = dlopen(file.c_str(), RTLD_LAZY | RTLD_NOLOAD);
    if (stillThere != nullptr) {
        dlclose(stillThere);
    }
    return stillThere == nullptr;
}

#endif

}  // namespace

ModuleLibrary::ModuleLibrary(const std::string& file)
    : file_(std::filesystem::absolute(file).string()), handle_(LoadFile(file_))
{
    if (handle_ == nullptr) {
        throw std::runtime_error(file_ + " cannot be loaded");
    }
}

ModuleLibrary::~ModuleLibrary()
{
    Unload();
}

void* ModuleLibrary::Export(const char* name) const
{
    return FindExport(handle_, name);
}

std::uint32_t ModuleLibrary::Reflect(const ReflectedObject** entries, std::uint32_t* count) const
{
    using Function = std::uint32_t (*)(const ReflectedObject**, std::uint32_t*);
    return reinterpret_cast<Function>(Export("ReflectServiceObjectInfo"))(entries, count);
}

std::uint32_t ModuleLibrary::Create(std::uint32_t atom, void** object) const
{
    using Function = std::uint32_t (*)(std::uint32_t, void**);
    return reinterpret_cast<Function>(Export("CreateServiceObject"))(atom, object);
}

std::uint32_t ModuleLibrary::RegisterResources(void* engine) const
{
    using Function = std::uint32_t (*)(void*);
    return reinterpret_cast<Function>(Export("RegisterResources"))(engine);
}

bool ModuleLibrary::Unload()
{
    void* const handle = std::exchange(handle_, nullptr);
    return handle != nullptr && UnloadFile(handle, file_);
}

#if defined(_WIN32)

std::string_view FindEmbeddedFile(void* instance, const char* type, const char* name)
{
    const auto module = static_cast<HMODULE>(instance);
    const HRSRC found = FindResourceA(module, name, type);
    if (found == nullptr) {
        return {};
    }
    const HGLOBAL loaded = LoadResource(module, found);
    return {static_cast<const char*>(LockResource(loaded)), SizeofResource(module, found)};
}

std::size_t CountThreads()
{
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    std::size_t count = 0;
    for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry)) {
        count += entry.th32OwnerProcessID == GetCurrentProcessId() ? 1u : 0u;
    }
    CloseHandle(snapshot);
    return count;
}

std::size_t MemoryInUse()
{
    PROCESS_MEMORY_COUNTERS counters{};
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    return counters.PagefileUsage;
}

#else

// A library on Linux exports the table of its files.
std::string_view FindEmbeddedFile(void* instance, const char* type, const char* name)
{
    struct File {
        const char* type;
        const char* name;
        const char* data;
        std::uint32_t size;
    };
    struct Table {
        const File* files;
        std::uint32_t count;
    };
    Dl_info info{};
    void* const handle =
        dladdr(instance, &info) == 0 ? nullptr : dlopen(info.dli_fname, RTLD_LAZY | RTLD_NOLOAD);
    if (handle == nullptr) {
        return {};
    }
    const auto* table = static_cast<const Table*>(dlsym(handle, "UiDataEmbeddedResources"));
    dlclose(handle);
    for (std::uint32_t i = 0; table != nullptr && i < table->count; ++i) {
        const File& file = table->files[i];
        if (std::strcmp(file.type, type) == 0 && std::strcmp(file.name, name) == 0) {
            return {file.data, file.size};
        }
    }
    return {};
}

std::size_t CountThreads()
{
    std::size_t count = 0;
    for ([[maybe_unused]] const auto& task :
         std::filesystem::directory_iterator("/proc/self/task")) {
        ++count;
    }
    return count;
}

std::size_t MemoryInUse()
{
    const struct mallinfo2 heap = mallinfo2();
    return heap.uordblks + heap.hblkhd;
}

#endif

}  // namespace Conformance
