#include "services/ModuleLibrary.h"

#include "service-common/Atom.h"

#include <stdexcept>

#if defined(_WIN32)
#include "platform/SystemErrors.h"
#include "service-common/WideText.h"

#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace Workbench {

namespace {

#if defined(_WIN32)

void* LoadFile(const std::filesystem::path& file)
{
    return LoadLibraryW(file.c_str());
}

std::string LastLoaderError()
{
    return ToUtf8(Platform::SystemErrorText(GetLastError()));
}

void* FindExport(void* handle, const char* name)
{
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle), name));
}

bool UnloadFile(void* handle, const std::filesystem::path& file)
{
    FreeLibrary(static_cast<HMODULE>(handle));
    return GetModuleHandleW(file.c_str()) == nullptr;
}

#else

void* LoadFile(const std::filesystem::path& file)
{
    return dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
}

std::string LastLoaderError()
{
    const char* error = dlerror();
    return error == nullptr ? "unknown error" : error;
}

void* FindExport(void* handle, const char* name)
{
    return dlsym(handle, name);
}

bool UnloadFile(void* handle, const std::filesystem::path& file)
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

ModuleLibrary::ModuleLibrary(const std::filesystem::path& file)
    : file_(std::filesystem::absolute(file)), handle_(LoadFile(file_))
{
    if (handle_ == nullptr) {
        throw std::runtime_error(file_.string() + " cannot be loaded: " + LastLoaderError());
    }
    try {
        reflect_ = Export<ReflectServiceObjectInfoExport>("ReflectServiceObjectInfo");
        create_ = Export<CreateServiceObjectExport>("CreateServiceObject");
        Export<RegisterResourcesExport>("RegisterResources");  // called by the module's own objects
    } catch (...) {
        Unload();
        throw;
    }
}

ModuleLibrary::~ModuleLibrary()
{
    Unload();
}

template <class Function>
Function ModuleLibrary::Export(const char* name) const
{
    void* const address = FindExport(handle_, name);
    if (address == nullptr) {
        throw std::runtime_error(file_.string() + " is no module: it does not export " + name);
    }
    return reinterpret_cast<Function>(address);
}

std::vector<std::string> ModuleLibrary::ObjectNames() const
{
    const ServiceObjectInfo* entries = nullptr;
    std::uint32_t count = 0;
    std::vector<std::string> names;
    if (reflect_(&entries, &count) == kResultOk) {
        for (std::uint32_t i = 0; i < count; ++i) {
            names.emplace_back(entries[i].name);
        }
    }
    return names;
}

BasicServiceObjectPtr<ServiceObject> ModuleLibrary::Create(const std::string& name) const
{
    Atom atom = kAtomNone;
    VxGetAtomFromString(name.c_str(), &atom);
    BasicServiceObjectPtr<ServiceObject> object;
    const ResultCode code = create_(atom, object.Receive());
    if (code != kResultOk || !object) {
        throw std::runtime_error(file_.string() + " makes no " + name + ", code " +
                                 std::to_string(code));
    }
    return object;
}

bool ModuleLibrary::Unload()
{
    void* const handle = std::exchange(handle_, nullptr);
    return handle != nullptr && UnloadFile(handle, file_);
}

std::filesystem::path ProgramFolder()
{
#if defined(_WIN32)
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length =
            GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (length < path.size()) {
            path.resize(length);
            return std::filesystem::path(path).parent_path();
        }
        path.resize(path.size() * 2);
    }
#else
    return std::filesystem::read_symlink("/proc/self/exe").parent_path();
#endif
}

}  // namespace Workbench
