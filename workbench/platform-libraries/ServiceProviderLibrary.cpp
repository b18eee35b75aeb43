#include "platform-libraries/ServiceProviderHost.h"
#include "platform/LibraryExport.h"
#include "platform/SystemErrors.h"
#include "service-common/ServiceProvider.h"

#include <exception>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <unordered_map>
#include <utility>

namespace {

// One listed name. Owns a reference to its object.
class Listing {
public:
    Listing() = default;
    explicit Listing(ServiceObject* object) : object_(object)
    {
        if (object_ != nullptr) {
            object_->AddRef(object_);
        }
    }
    Listing(ResultCode code, std::uint32_t systemErrorCode)
        : code_(code), systemErrorCode_(systemErrorCode)
    {
    }
    Listing(Listing&& other) noexcept
        : object_(std::exchange(other.object_, nullptr)),
          code_(other.code_),
          systemErrorCode_(other.systemErrorCode_)
    {
    }
    Listing& operator=(Listing other) noexcept
    {
        std::swap(object_, other.object_);
        std::swap(code_, other.code_);
        std::swap(systemErrorCode_, other.systemErrorCode_);
        return *this;
    }
    ~Listing()
    {
        if (object_ != nullptr) {
            object_->Release(object_);
        }
    }

    ResultCode HandOut(ServiceObject** object) const
    {
        if (object_ != nullptr) {
            object_->AddRef(object_);
            *object = object_;
        }
        return code_;
    }

    std::uint32_t SystemError() const noexcept { return systemErrorCode_; }

private:
    ServiceObject* object_ = nullptr;
    ResultCode code_ = kResultOk;
    std::uint32_t systemErrorCode_ = 0;
};

// Objects are released with the lock not held: their last release may lead back here.
class Provider {
public:
    void List(Atom name, Listing listing)
    {
        const std::lock_guard lock(mutex_);
        std::swap(listings_[name], listing);
    }

    ResultCode Forget(Atom name)
    {
        decltype(listings_)::node_type forgotten;
        {
            const std::lock_guard lock(mutex_);
            forgotten = listings_.extract(name);
        }
        return forgotten.empty() ? kResultNotFound : kResultOk;
    }

    void ForgetAll()
    {
        decltype(listings_) forgotten;
        {
            const std::lock_guard lock(mutex_);
            forgotten.swap(listings_);
        }
    }

    ResultCode HandOut(Atom name, ServiceObject** object)
    {
        std::uint32_t systemError = 0;
        ResultCode code = kResultServiceUnknown;
        {
            const std::shared_lock lock(mutex_);
            const auto found = listings_.find(name);
            if (found != listings_.end()) {
                code = found->second.HandOut(object);
                systemError = found->second.SystemError();
            }
        }
        if (systemError != 0) {
            Platform::SetSystemError(systemError);
        }
        return code;
    }

private:
    std::shared_mutex mutex_;
    std::unordered_map<Atom, Listing> listings_;
};

// Never destroyed: what is still listed at the end of the process is not touched any more.
Provider& TheProvider()
{
    static Provider& provider = *std::make_unique<Provider>().release();
    return provider;
}

template <class Work>
ResultCode WithAtomOf(const char* name, Work work)
{
    Atom atom = kAtomNone;
    const ResultCode code = VxGetAtomFromString(name, &atom);
    if (code != kResultOk) {
        return code;
    }
    try {
        return work(atom);
    } catch (const std::exception&) {
        return kResultUnexpected;
    }
}

}  // namespace

extern "C" {

LIBRARY_EXPORT ResultCode ServiceProviderGetServiceObject(Atom name, ServiceObject** object)
{
    if (object == nullptr) {
        return kResultNullArgument;
    }
    *object = nullptr;
    return name == kAtomNone ? kResultNullArgument : TheProvider().HandOut(name, object);
}

LIBRARY_EXPORT ResultCode VxHostRegisterService(const char* name, ServiceObject* object)
{
    return WithAtomOf(name, [object](Atom atom) {
        TheProvider().List(atom, Listing(object));
        return kResultOk;
    });
}

LIBRARY_EXPORT ResultCode VxHostRefuseService(const char* name, ResultCode code,
                                              std::uint32_t systemErrorCode)
{
    return WithAtomOf(name, [code, systemErrorCode](Atom atom) {
        TheProvider().List(atom, Listing(code, systemErrorCode));
        return kResultOk;
    });
}

LIBRARY_EXPORT ResultCode VxHostUnregisterService(const char* name)
{
    return WithAtomOf(name, [](Atom atom) { return TheProvider().Forget(atom); });
}

LIBRARY_EXPORT void VxHostUnregisterAllServices()
{
    TheProvider().ForgetAll();
}

}  // extern "C"
