// The exports of a module that registers no service object, and of a host whose engine makes
// registration objects but cannot register them.
#include "HostFixture.h"

#include "Exports.h"

#include "ui-engine/UIEngine.SO.h"

#include <gtest/gtest.h>

namespace {

using BareModule = Fakes::HostFixture;

TEST_F(BareModule, HasNoPublicObjectsEvenWhenOneComesLate)
{
    Atom atom = kAtomNone;
    ASSERT_EQ(VxGetAtomFromString("BareModule.Late", &atom), kResultOk);
    ServiceObject* object = nullptr;
    EXPECT_EQ(CreateServiceObject(atom, &object), 0x10005u);
    const ServiceObjectInfo stray{};
    const ServiceObjectInfo* entries = &stray;
    std::uint32_t count = 9;
    EXPECT_EQ(ReflectServiceObjectInfo(&entries, &count), 0x10007u);
    EXPECT_EQ(entries, nullptr);
    EXPECT_EQ(count, 0u);
    const SODetails::ServiceObjectRegistration late("BareModule.Late", [] { return nullptr; });
    EXPECT_EQ(ReflectServiceObjectInfo(&entries, &count), 0x10007u);
    EXPECT_EQ(CreateServiceObject(atom, &object), 0x10006u);
}

TEST_F(BareModule, CountsAsRegisteredWithAnEngineThatCannotRegister)
{
    Fakes::Fake<UIEngine> engine;
    Fakes::Fake<UIResourceRegistration> registration;
    engine.On<UIEngine::CreateRegistration>([&](Platform::ModuleInstance, auto** out) {
        *out = registration.HandOut();
        return kResultOk;
    });
    engine.On<UIEngine::Register>([](UIResourceRegistration*) { return kResultOk; });
    engine->CutTable(56);
    EXPECT_EQ(RegisterResources(engine.Get()), kResultOk);
    EXPECT_EQ(engine.Calls<UIEngine::CreateRegistration>(), 1u);
    EXPECT_EQ(engine.Calls<UIEngine::Register>(), 0u);
    EXPECT_EQ(registration->References(), 1u);
    engine->CutTable(64);
    EXPECT_EQ(RegisterResources(engine.Get()), kResultOk);
    EXPECT_EQ(engine.Calls<UIEngine::CreateRegistration>(), 1u);
}

}  // namespace
