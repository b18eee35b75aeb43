#include "service-common/ServiceObjectRegistry.h"

#include "service-common/SingletonHolder.h"
#include "service-common/SingletonStaticData.h"

#include <exception>
#include <utility>
#include <vector>

namespace SODetails {
namespace {

// Head of the registry. Zero-initialised, so that registrations may be made in any order of the
// static initialisers.
ServiceObjectRegistration* g_firstRegistration = nullptr;

struct ReflectionTable {
    bool built = false;
    std::vector<ServiceObjectInfo> entries;  // ends with a zero entry that is not counted
};

// The factory's object; empty when there is no factory or it fails in any way.
BasicServiceObjectPtr<ServiceObject> MakeObject(const ServiceObjectRegistration::Factory& factory)
{
    const auto copy = factory;
    try {
        return copy ? copy() : nullptr;
    } catch (const std::exception&) {
        return nullptr;
    }
}

}  // namespace

ServiceObjectRegistration::ServiceObjectRegistration(const char* name, Factory factory)
    : name_(name), factory_(std::move(factory)), next_(g_firstRegistration)
{
    g_firstRegistration = this;
}

ServiceObjectRegistration::~ServiceObjectRegistration()
{
    ServiceObjectRegistration** link = &g_firstRegistration;
    while (*link != nullptr && *link != this) {
        link = &(*link)->next_;
    }
    if (*link == this) {
        *link = next_;
    }
}

ResultCode ReflectRegisteredObjects(const ServiceObjectInfo** entries, std::uint32_t* count)
{
    if (entries == nullptr || count == nullptr) {
        return kResultNullArgument;
    }
    auto& table = SingletonHolder<ReflectionTable>::Instance();
    if (!table.built) {
        std::vector<ServiceObjectInfo> made;
        for (const auto* record = g_firstRegistration; record != nullptr; record = record->next_) {
            made.push_back({record->atom_, 0, record->name_});
        }
        if (!made.empty()) {
            made.push_back({});
        }
        table.entries.swap(made);
        table.built = true;
    }
    if (table.entries.empty()) {
        *entries = nullptr;
        *count = 0;
        return kResultNoPublicObjects;
    }
    *entries = table.entries.data();
    *count = static_cast<std::uint32_t>(table.entries.size() - 1);
    return kResultOk;
}

ResultCode CreateRegisteredObject(Atom atom, ServiceObject** object)
{
    if (atom == kAtomNone || object == nullptr) {
        return kResultNullArgument;
    }
    for (auto* record = g_firstRegistration; record != nullptr; record = record->next_) {
        if (record->atom_ == kAtomUnresolved) {
            Atom resolved = kAtomUnresolved;
            if (VxGetAtomFromString(record->name_, &resolved) == kResultOk) {
                record->atom_ = resolved;
            }
        }
        if (record->atom_ != atom || atom == kAtomUnresolved) {
            continue;
        }
        auto made = MakeObject(record->factory_);
        if (!made) {
            return kResultFactoryFailed;
        }
        *object = made.Detach();
        return kResultOk;
    }
    return kResultServiceNotInModule;
}

}  // namespace SODetails
