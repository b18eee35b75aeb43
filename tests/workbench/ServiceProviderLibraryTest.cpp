#include "platform-libraries/ServiceProviderHost.h"
#include "platform/SystemErrors.h"
#include "service-common/ServiceProvider.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

// A service object that only counts.
struct CountedObject : ServiceObject {
    CountedObject() : ServiceObject{}
    {
        AddRef = [](ServiceObject* self) {
            return ++static_cast<CountedObject*>(self)->references;
        };
        Release = [](ServiceObject* self) {
            auto* const object = static_cast<CountedObject*>(self);
            const std::uint32_t left = --object->references;
            if (object->onRelease != nullptr) {
                object->onRelease();
            }
            return left;
        };
    }
    std::atomic<std::uint32_t> references = 0;
    void (*onRelease)() = nullptr;
};

Atom AtomOf(const char* name)
{
    Atom atom = kAtomNone;
    VxGetAtomFromString(name, &atom);
    return atom;
}

class Provider : public ::testing::Test {
protected:
    ~Provider() override { VxHostUnregisterAllServices(); }

    ResultCode Ask(const char* name)
    {
        given = reinterpret_cast<ServiceObject*>(this);
        const Atom atom = AtomOf(name);
        Platform::SetSystemError(0);
        const ResultCode code = ServiceProviderGetServiceObject(atom, &given);
        systemError = Platform::SystemError();
        return code;
    }

    ServiceObject* given = nullptr;
    std::uint32_t systemError = 0;
};

TEST_F(Provider, HandsOutOwnedReferencesAndClearsOutValues)
{
    CountedObject object;
    ASSERT_EQ(VxHostRegisterService("Service", &object), kResultOk);
    EXPECT_EQ(object.references, 1u);
    EXPECT_EQ(Ask("Service"), kResultOk);
    EXPECT_EQ(given, &object);
    EXPECT_EQ(systemError, 0u);
    EXPECT_EQ(object.references, 2u);
    EXPECT_EQ(ServiceProviderGetServiceObject(AtomOf("Service"), &given), kResultOk);
    EXPECT_EQ(object.references, 3u);

    EXPECT_EQ(Ask("Unknown"), kResultServiceUnknown);
    EXPECT_EQ(given, nullptr);
    EXPECT_EQ(systemError, 0u);
    EXPECT_EQ(ServiceProviderGetServiceObject(kAtomNone, &given), kResultNullArgument);
    EXPECT_EQ(ServiceProviderGetServiceObject(AtomOf("Service"), nullptr), kResultNullArgument);

    EXPECT_EQ(VxHostUnregisterService("Service"), kResultOk);
    EXPECT_EQ(VxHostUnregisterService("Service"), kResultNotFound);
    EXPECT_EQ(object.references, 2u);
    EXPECT_EQ(Ask("Service"), kResultServiceUnknown);
}

TEST_F(Provider, GivesTheCodesThatAHostSimulates)
{
    CountedObject object;
    for (const ResultCode code : {kResultServiceNotInModule, kResultFactoryFailed,
                                  kResultModuleNotFound, kResultFactoryNotFound, ResultCode{99}}) {
        ASSERT_EQ(VxHostRegisterService("Service", &object), kResultOk);
        ASSERT_EQ(VxHostRefuseService("Service", code, 126), kResultOk);
        EXPECT_EQ(object.references, 0u) << "the object is released when it is replaced";
        EXPECT_EQ(Ask("Service"), code);
        EXPECT_EQ(given, nullptr);
        EXPECT_EQ(systemError, 126u);
    }
    ASSERT_EQ(VxHostRegisterService("Service", nullptr), kResultOk);
    EXPECT_EQ(Ask("Service"), kResultOk);
    EXPECT_EQ(given, nullptr);
}

// A service whose last reference goes may itself look for services.
TEST_F(Provider, ReleasesObjectsWithoutHoldingItsLock)
{
    CountedObject object;
    object.onRelease = [] {
        ServiceObject* other = nullptr;
        EXPECT_EQ(ServiceProviderGetServiceObject(AtomOf("Self"), &other), kResultServiceUnknown);
    };
    VxHostRegisterService("Self", &object);
    VxHostUnregisterService("Self");
    VxHostRegisterService("Self", &object);
    VxHostUnregisterAllServices();
    EXPECT_EQ(object.references, 0u);
}

TEST_F(Provider, KeepsCountsRightWhileServicesComeAndGo)
{
    CountedObject object;
    std::atomic<bool> ends = false;
    std::vector<std::thread> askers;
    for (int i = 0; i < 3; ++i) {
        askers.emplace_back([&ends] {
            while (!ends) {
                ServiceObject* found = nullptr;
                if (ServiceProviderGetServiceObject(AtomOf("Service"), &found) == kResultOk) {
                    found->Release(found);
                }
            }
        });
    }
    for (int i = 0; i < 2'000; ++i) {
        VxHostRegisterService("Service", &object);
        VxHostUnregisterService("Service");
    }
    ends = true;
    for (std::thread& asker : askers) {
        asker.join();
    }
    EXPECT_EQ(object.references, 0u);
}

}  // namespace
