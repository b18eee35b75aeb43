#include "services/ResourceStore.h"

#include "service-common/UnicodeText.h"

#include <algorithm>
#include <mutex>
#include <string>

namespace Workbench {

namespace {

constexpr const char* kFileType = "UI-DATA";
constexpr const char* kContentsType = "UI-DATA-TOC";

std::string UpperCased(std::string_view path)
{
    std::string name(path);
    std::transform(name.begin(), name.end(), name.begin(), [](char c) {
        return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    });
    return name;
}

}  // namespace

ResourceStore& ResourceStore::Instance()
{
    static ResourceStore store;
    return store;
}

bool ResourceStore::Register(Platform::ModuleInstance module)
{
    const Platform::ResourceBytes contents =
        Platform::FindEmbeddedResource(module, kContentsType, kContentsType);
    if (contents.data == nullptr) {
        return false;
    }
    std::string_view paths(reinterpret_cast<const char*>(contents.data), contents.size);
    const std::lock_guard lock(mutex_);
    if (std::find(modules_.begin(), modules_.end(), module) != modules_.end()) {
        return true;
    }
    modules_.push_back(module);
    while (!paths.empty()) {
        const std::string_view path = paths.substr(0, paths.find(';'));
        paths.remove_prefix(std::min(paths.size(), path.size() + 1));
        const Platform::ResourceBytes bytes =
            Platform::FindEmbeddedResource(module, kFileType, UpperCased(path).c_str());
        if (bytes.data != nullptr) {
            files_.try_emplace(UnicodeText::ToUtf16(path), File{module, bytes});
        }
    }
    return true;
}

void ResourceStore::Forget(Platform::ModuleInstance module)
{
    const std::lock_guard lock(mutex_);
    modules_.erase(std::remove(modules_.begin(), modules_.end(), module), modules_.end());
    std::erase_if(files_, [module](const auto& entry) { return entry.second.module == module; });
}

std::vector<Platform::ModuleInstance> ResourceStore::Modules() const
{
    const std::shared_lock lock(mutex_);
    return modules_;
}

Platform::ResourceBytes ResourceStore::Find(std::u16string_view path) const
{
    const std::shared_lock lock(mutex_);
    const auto found = files_.find(path);
    return found == files_.end() ? Platform::ResourceBytes{} : found->second.bytes;
}

}  // namespace Workbench
