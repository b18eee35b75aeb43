// The exports of the module as built: one public object, and resources that are registered once.
#include "HostFixture.h"

#include "Exports.h"

#include "platform/ModuleInstance.h"
#include "ui-engine/UIEngine.SO.h"
#include "ui-engine/UIInplacePlugin.SO.h"

#include <gtest/gtest.h>

namespace {

using Fakes::Fake;
using Fakes::ThrownBy;
using ModuleExports = Fakes::HostFixture;

TEST_F(ModuleExports, OfferThePluginAndNothingElse)
{
    const ServiceObjectInfo* entries = nullptr;
    std::uint32_t count = 0;
    ASSERT_EQ(ReflectServiceObjectInfo(&entries, &count), kResultOk);
    ASSERT_EQ(count, 1u);
    EXPECT_STREQ(entries[0].name, "CommentsPanelInplacePlugin");

    Atom atom = kAtomNone;
    ASSERT_EQ(VxGetAtomFromString(entries[0].name, &atom), kResultOk);
    BasicServiceObjectPtr<ServiceObject> first;
    ASSERT_EQ(CreateServiceObject(atom, first.Receive()), kResultOk);
    EXPECT_EQ(CheckServiceObject(first.Get(), "UIInplacePlugin"), kResultOk);

    ServiceObject* none = nullptr;
    ASSERT_EQ(VxGetAtomFromString("CommentsPanelHandler", &atom), kResultOk);
    EXPECT_EQ(CreateServiceObject(atom, &none), kResultServiceNotInModule);
    EXPECT_EQ(none, nullptr);
}

// The module remembers a success for the life of the process, so that everything that must not
// count as one is tried first.
TEST_F(ModuleExports, RegisterResourcesTriesAgainUntilItSucceededOnce)
{
    EXPECT_EQ(RegisterResources(nullptr), kResultNullArgument);

    Fake<UIEngine> engine;
    Fake<UIResourceRegistration> registration;
    int instance = 0;
    Platform::SetCurrentModuleInstance(&instance);
    ResultCode createCode = kResultOk;
    ResultCode registerCode = kResultOk;
    bool handsOut = false;
    Platform::ModuleInstance seen = nullptr;
    engine.On<UIEngine::CreateRegistration>(
        [&](Platform::ModuleInstance module, UIResourceRegistration** out) {
            seen = module;
            *out = handsOut ? registration.HandOut() : nullptr;
            return createCode;
        });
    engine.On<UIEngine::Register>([&](UIResourceRegistration* object) {
        EXPECT_EQ(object, registration.Get());
        return registerCode;
    });
    const auto created = [&] { return engine.Calls<UIEngine::CreateRegistration>(); };
    const auto registered = [&] { return engine.Calls<UIEngine::Register>(); };

    // A short table, then a host that has no registration object to give.
    for (const std::uint32_t bytes : {32u, 64u}) {
        engine->CutTable(bytes);
        EXPECT_EQ(RegisterResources(engine.Get()), kResultOk) << bytes;
        EXPECT_EQ(created(), bytes == 64 ? 1u : 0u);
    }
    EXPECT_EQ(registered(), 0u);
    EXPECT_EQ(seen, &instance);

    // A host that fails, with and without an error record.
    createCode = 5;
    EXPECT_EQ(RegisterResources(engine.Get()), kResultOk);
    engine->error = ErrorRecord{0x77, L"no room", "Engine", "engine.h", 3};
    auto thrown = ThrownBy([&] { RegisterResources(engine.Get()); });
    ASSERT_TRUE(thrown);
    EXPECT_EQ(thrown->Message(), L"no room");
    handsOut = true;  // an object that comes with a failure is not leaked
    EXPECT_TRUE(ThrownBy([&] { RegisterResources(engine.Get()); }));
    EXPECT_EQ(registered(), 0u);
    createCode = kResultOk;
    registerCode = 5;
    thrown = ThrownBy([&] { RegisterResources(engine.Get()); });
    ASSERT_TRUE(thrown);
    EXPECT_EQ(thrown->Code(), 0x77u);
    EXPECT_EQ(registered(), 1u);
    EXPECT_EQ(registration->References(), 1u);

    registerCode = kResultDeclined;
    const unsigned attempts = created();
    EXPECT_EQ(RegisterResources(engine.Get()), kResultOk);
    EXPECT_EQ(created(), attempts + 1);
    EXPECT_EQ(registered(), 2u);
    EXPECT_EQ(registration->References(), 1u);
    EXPECT_EQ(RegisterResources(engine.Get()), kResultOk);
    EXPECT_EQ(created(), attempts + 1);
    EXPECT_EQ(RegisterResources(nullptr), kResultNullArgument);
    Platform::SetCurrentModuleInstance(nullptr);
}

}  // namespace
