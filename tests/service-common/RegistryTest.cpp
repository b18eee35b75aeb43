// The registry of creatable objects and its reflection table. The table is built once per process;
// the exports of a module with one object, and with none, are tested in programs of their own.
#include "HostFixture.h"
#include "ProbeObject.h"

#include "platform-libraries/AtomLibraryHost.h"
#include "service-common/ServiceObjectRegistry.h"
#include "service-common/SingletonHolder.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>

namespace {

using SODetails::CreateRegisteredObject;
using SODetails::ReflectRegisteredObjects;
using SODetails::ServiceObjectRegistration;

Atom AtomOf(const char* name)
{
    Atom atom = kAtomNone;
    EXPECT_EQ(VxGetAtomFromString(name, &atom), kResultOk);
    return atom;
}

class Registry : public Fakes::HostFixture {
protected:
    ServiceObjectRegistration::Factory ProbeFactory()
    {
        return [this] {
            return BasicServiceObjectPtr<ServiceObject>::Adopt(
                ProbeObject::Create(deaths_).Detach()->AsInterface());
        };
    }

    std::atomic<int> deaths_ = 0;
};

TEST_F(Registry, ResolvesEachNameOnceAndCreatesAFreshObjectEachTime)
{
    const ServiceObjectRegistration older("Registry.Older", ProbeFactory());
    const ServiceObjectRegistration newer("Registry.Newer", ProbeFactory());
    const auto requests = [](const char* name) { return VxHostCountAtomRequests(name); };
    EXPECT_EQ(requests("Registry.Older") + requests("Registry.Newer"), 0u);

    const Atom wanted = AtomOf("Registry.Older");
    BasicServiceObjectPtr<ServiceObject> first;
    BasicServiceObjectPtr<ServiceObject> second;
    ASSERT_EQ(CreateRegisteredObject(wanted, first.Receive()), kResultOk);
    EXPECT_EQ(requests("Registry.Newer"), 1u);  // stands before the one wanted
    EXPECT_EQ(requests("Registry.Older"), 2u);  // once by this test
    ASSERT_EQ(CreateRegisteredObject(wanted, second.Receive()), kResultOk);
    EXPECT_EQ(requests("Registry.Newer"), 1u);
    EXPECT_EQ(requests("Registry.Older"), 2u);

    EXPECT_NE(first, second);
    EXPECT_EQ(first->GetRefCount(first.Get()), 1u);
    first.Reset();
    second.Reset();
    EXPECT_EQ(deaths_, 2);
}

TEST_F(Registry, TellsApartWhatItCannotCreate)
{
    const ServiceObjectRegistration unresolvable("", ProbeFactory());  // no name, never an atom
    const ServiceObjectRegistration noFactory("Registry.NoFactory", {});
    const ServiceObjectRegistration noObject("Registry.NoObject", [] { return nullptr; });
    const ServiceObjectRegistration throwing(
        "Registry.Throwing",
        []() -> BasicServiceObjectPtr<ServiceObject> { throw std::bad_alloc(); });
    ServiceObject* object = nullptr;
    EXPECT_EQ(CreateRegisteredObject(kAtomNone, &object), kResultNullArgument);
    EXPECT_EQ(CreateRegisteredObject(AtomOf("Registry.NoObject"), nullptr), kResultNullArgument);
    EXPECT_EQ(CreateRegisteredObject(AtomOf("Registry.Stranger"), &object), 0x10005u);
    EXPECT_EQ(CreateRegisteredObject(kAtomUnresolved, &object), 0x10005u);
    EXPECT_EQ(CreateRegisteredObject(AtomOf("Registry.NoFactory"), &object), 0x10006u);
    EXPECT_EQ(CreateRegisteredObject(AtomOf("Registry.NoObject"), &object), 0x10006u);
    EXPECT_EQ(CreateRegisteredObject(AtomOf("Registry.Throwing"), &object), 0x10006u);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(deaths_, 0);
}

TEST_F(Registry, ReflectsTheSameArrayOnEveryCallNewestFirst)
{
    const ServiceObjectInfo* entries = nullptr;
    std::uint32_t count = 77;
    EXPECT_EQ(ReflectRegisteredObjects(nullptr, &count), kResultNullArgument);
    EXPECT_EQ(ReflectRegisteredObjects(&entries, nullptr), kResultNullArgument);
    EXPECT_EQ(count, 77u);
    EXPECT_EQ(entries, nullptr);
    {
        const ServiceObjectRegistration unresolved("Registry.First", ProbeFactory());
        const ServiceObjectRegistration resolved("Registry.Second", ProbeFactory());
        BasicServiceObjectPtr<ServiceObject> object;
        const Atom atom = AtomOf("Registry.Second");
        ASSERT_EQ(CreateRegisteredObject(atom, object.Receive()), kResultOk);

        ASSERT_EQ(ReflectRegisteredObjects(&entries, &count), kResultOk);
        ASSERT_EQ(count, 2u);
        EXPECT_EQ(entries[0].atom, atom);
        EXPECT_STREQ(entries[0].name, "Registry.Second");
        EXPECT_EQ(entries[1].atom, 0xFFFFFFFFu);
        EXPECT_STREQ(entries[1].name, "Registry.First");
        EXPECT_EQ(entries[2].name, nullptr);  // ends the array, is not counted
    }
    const ServiceObjectRegistration late("Registry.Late", ProbeFactory());
    const ServiceObjectInfo* again = nullptr;
    count = 0;
    EXPECT_EQ(ReflectRegisteredObjects(&again, &count), kResultOk);
    EXPECT_EQ(again, entries);
    EXPECT_EQ(count, 2u);
}

struct HeldForLife {
    int value = 0;
};
bool g_singletonWasMade = false;

// Destroyed after every object that is made during the tests: the holder is gone by then. Nothing
// but the exit code can tell of a failure so late.
const struct DeadReferenceProbe {
    ~DeadReferenceProbe()
    {
        if (!g_singletonWasMade) {
            return;
        }
        try {
            SODetails::SingletonHolder<HeldForLife>::Instance();
        } catch (const std::logic_error& failure) {
            if (std::string(failure.what()) == "Dead Reference Detected") {
                return;
            }
        }
        std::fputs("a dead singleton was handed out\n", stderr);
        std::_Exit(EXIT_FAILURE);
    }
} g_deadReferenceProbe;

TEST(SingletonHolder, KeepsOneObjectUntilStaticObjectsAreDestroyed)
{
    auto& first = SODetails::SingletonHolder<HeldForLife>::Instance();
    first.value = 5;
    g_singletonWasMade = true;
    EXPECT_EQ(SODetails::SingletonHolder<HeldForLife>::Instance().value, 5);
}

}  // namespace
