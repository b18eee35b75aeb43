// A service object of the module, seen through nothing but its bytes.
#pragma once

#include "Contract.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <utility>

namespace Conformance {

class ModuleObject {
public:
    ModuleObject() = default;
    explicit ModuleObject(void* address) : address_(static_cast<char*>(address)) {}

    explicit operator bool() const noexcept { return address_ != nullptr; }
    bool operator==(const ModuleObject&) const = default;
    void* Address() const noexcept { return address_; }

    template <class T>
    T Read(std::size_t offset) const
    {
        if (address_ == nullptr) {
            throw std::runtime_error("an object is missing");
        }
        T value;
        std::memcpy(&value, address_ + offset, sizeof value);
        return value;
    }
    std::string Tag(std::size_t offset) const
    {
        const auto tag = Read<std::array<char, 4>>(offset);
        return {tag.data(), tag.size()};
    }

    // One of the common entries.
    template <class... Args>
    std::uint32_t CallAt(std::size_t offset, Args... arguments) const
    {
        return Read<std::uint32_t (*)(void*, Args...)>(offset)(address_, arguments...);
    }
    std::uint32_t AddRef() const { return CallAt(kAddRefAt); }
    std::uint32_t Release() const { return CallAt(kReleaseAt); }
    std::uint32_t Count() const { return CallAt(kGetRefCountAt); }

    template <class... Args>
    std::uint32_t Call(unsigned slot, Args... arguments) const
    {
        return CallAt(kMethodsAt + 8 * slot, arguments...);
    }
    template <class... Args>
    std::uint32_t CallByName(const char* name, Args... arguments) const
    {
        using Function = std::uint32_t (*)(void*, const char*, ...);
        return Read<Function>(kCallMethodByNameAt)(address_, name, arguments...);
    }

    // Gives up the reference; 0 for none.
    std::uint32_t ReleaseAndForget()
    {
        return address_ == nullptr ? 0 : std::exchange(*this, ModuleObject()).Release();
    }

private:
    char* address_ = nullptr;
};

// A weak-reference record of the module.
class WeakRecord {
public:
    explicit WeakRecord(const ModuleObject& object)
    {
        result = object.CallAt(kGetWeakReferenceAt, &address);
    }

    std::uint32_t Holders() const
    {
        return ModuleObject(address).Read<std::uint32_t>(kHolderCountAt);
    }
    void* Object() const { return ModuleObject(address).Read<void*>(kBackPointerAt); }
    std::uint32_t DropHolder() const { return Entry<std::uint32_t>(1); }
    bool IsAlive() const { return Entry<bool>(3); }
    ModuleObject Lock() const { return ModuleObject(Entry<void*>(4)); }

    std::uint32_t result;
    void* address = nullptr;

private:
    template <class R>
    R Entry(unsigned index) const
    {
        return ModuleObject(address).Read<R (*)(void*)>(8 * index)(address);
    }
};

// The calling thread's last error in the module, read through one of its objects.
class LastError {
public:
    explicit LastError(const ModuleObject& object)
    {
        std::memset(&words, 0x5A, sizeof words);
        result = object.CallAt(kGetLastErrorInfoAt, &words, &errorObject);
    }

    // In ASCII; "(none)" without an error.
    std::string Message() const
    {
        std::string narrow = result == 0 ? "" : "(none)";
        const char16_t* unit = result == 0 ? words.message : nullptr;
        for (; unit != nullptr && *unit != 0; ++unit) {
            narrow += static_cast<char>(*unit);
        }
        return narrow;
    }

    ErrorWords words;
    void* errorObject = nullptr;
    std::uint32_t result;
};

}  // namespace Conformance
