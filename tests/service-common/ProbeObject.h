// A small interface and a class that implements it, for tests of the contract itself.
#pragma once

#include "service-common/ServiceObjectImplementation.h"

#include <atomic>

struct ProbeInterface : ServiceObject {
    static constexpr const char* kName = "Probe";
    static constexpr const char* kHeader = "tests/service-common/ProbeObject.h";

    SO_METHOD(ProbeInterface, First, 0, int value);
    SO_METHOD(ProbeInterface, Second, 1, int value);
    SO_METHOD(ProbeInterface, Distant, 31, int value);

    using Catalogue = SODetails::MethodCatalogue<First, Second, Distant>;
};

class ProbeObject : public SODetails::ServiceObjectBase<ProbeInterface> {
public:
    // `deaths` counts the objects that were destroyed.
    explicit ProbeObject(std::atomic<int>& deaths) : deaths_(deaths) {}
    ~ProbeObject() { ++deaths_; }

    static ProbeObject* FromInterface(ServiceObject* header) noexcept
    {
        return static_cast<ProbeObject*>(FromHeader(header));
    }
    static auto Create(std::atomic<int>& deaths)
    {
        return SODetails::ServiceObjectCppTheConcrete<ProbeObject>::Create(deaths);
    }

private:
    std::atomic<int>& deaths_;
};
