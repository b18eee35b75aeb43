// Asking the host's provider for services, and the host's process-wide storage.
#include "HostFixture.h"
#include "ProbeObject.h"

#include "platform-libraries/AtomLibraryHost.h"
#include "platform-libraries/ServiceProviderHost.h"
#include "platform/SystemErrors.h"
#include "service-common/ServiceProvider.h"
#include "service-common/SingletonStaticData.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace {

using Fakes::Fake;
using Fakes::ThrownBy;
using Provider = Fakes::HostFixture;

// An interface that no other test asks for: how often its atom is resolved can be counted.
struct CountedService : ProbeInterface {
    static constexpr const char* kName = "Provider.Counted";
};

constexpr std::uint32_t kSystemError = 2;  // known to both systems: no such file

std::wstring WithSystemError(std::wstring text)
{
    const std::wstring description = Platform::SystemErrorText(kSystemError);
    EXPECT_FALSE(description.empty());
    return text + L"\n\nSystem error code: [2]\nDescription: " + description + L"\n";
}

TEST_F(Provider, TellsEachFailureInItsOwnWords)
{
    const std::wstring unsupported = L"service is not supported by the corresponding module.\n";
    const std::wstring factory = L"service object factory function failed.\n";
    const std::wstring noObjects =
        L"there are no public service objects in corresponding module.\n";
    const std::wstring unknown =
        L"corresponding service is not supported by the service provider.\n";
    const std::wstring noModule =
        L"the service provider cannot find corresponding module to create service object.";
    const std::wstring noFunction = L"the service provider cannot find corresponding factory "
                                    L"function in the module to create service object.";
    const std::wstring other = L"\"ServiceProviderGetServiceObject()\" call failed with code ";
    struct Row {
        ResultCode code;
        std::wstring plain;
        std::wstring withSystemError;
    };
    const Row rows[] = {
        {0x10005, unsupported, unsupported},
        {0x10006, factory, factory},
        {0x10007, noObjects, noObjects},
        {0x10008, unknown, unknown},
        {0x10009, noModule + L"\n", WithSystemError(noModule)},
        {0x1000A, noFunction + L" ", WithSystemError(noFunction)},
        {0x1000B, other + L"65547.\n", WithSystemError(other + L"65547.")},
        {1, other + L"1.\n", WithSystemError(other + L"1.")},
        {10, other + L"10.\n", WithSystemError(other + L"10.")},
        {3, other + L"3.\n", WithSystemError(other + L"3.")},
        {0x80004005, other + L"2147500037.\n", WithSystemError(other + L"2147500037.")},
    };
    for (const Row& row : rows) {
        for (const std::uint32_t systemError : {0u, kSystemError}) {
            SCOPED_TRACE(testing::Message() << row.code << " " << systemError);
            const std::wstring& message = systemError == 0 ? row.plain : row.withSystemError;
            const auto thrown =
                ThrownBy([&] { SP::_CheckServiceProviderApiResult(row.code, systemError); });
            ASSERT_TRUE(thrown);
            EXPECT_EQ(thrown->Code(), row.code);
            EXPECT_EQ(thrown->Message(), message);
            EXPECT_EQ(thrown->Function(), "SP::_CheckServiceProviderApiResult");

            VxHostRefuseService("Probe", row.code, systemError);
            const auto wrapped = ThrownBy([] { SP::QueryServiceObject<ProbeInterface>(); });
            ASSERT_TRUE(wrapped);
            EXPECT_EQ(wrapped->Code(), row.code);
            EXPECT_EQ(wrapped->Message(), L"Fail to query Probe service object: " + message);
        }
    }
    EXPECT_NO_THROW(SP::_CheckServiceProviderApiResult(0, kSystemError));
}

TEST(SystemErrors, HaveATextEvenWhereTheSystemHasNone)
{
    for (const std::uint32_t code : {kSystemError, 0x7FFFFFF1u, 0xFFFFFFF1u}) {
        EXPECT_NE(Platform::SystemErrorText(code), L"") << code;
    }
}

TEST_F(Provider, HandsOutOneReferenceAndResolvesTheNameOnce)
{
    const auto unlisted = ThrownBy([] { SP::QueryServiceObject<CountedService>(); });
    ASSERT_TRUE(unlisted);
    EXPECT_EQ(unlisted->Message(), L"Fail to query Provider.Counted service object: "
                                   L"corresponding service is not supported by the service "
                                   L"provider.\n");
    EXPECT_EQ(VxHostCountAtomRequests(CountedService::kName), 1u);

    Fake<CountedService> service;
    Provide(service);
    const std::uint64_t before = VxHostCountAtomRequests(CountedService::kName);
    {
        const auto first = SP::QueryServiceObject<CountedService>();
        const auto second = SP::QueryServiceObject<CountedService>();
        EXPECT_EQ(first.Get(), service.Get());
        EXPECT_EQ(service->References(), 4u);  // the test's and the provider's among them
    }
    EXPECT_EQ(service->References(), 2u);
    EXPECT_EQ(VxHostCountAtomRequests(CountedService::kName), before);

    ProvideAs(CountedService::kName, nullptr);
    EXPECT_FALSE(SP::QueryServiceObject<CountedService>());
}

TEST_F(Provider, StorageFailuresHaveTheirTexts)
{
    constexpr const wchar_t* kDestroyed =
        L"Fail to get atom singleton instance! Is is already destroyed!";
    constexpr const wchar_t* kOtherId =
        L"Fail to get atom singleton instance! Incorrect StaticDataID!";
    const auto create = [](std::uint32_t id) {
        return SODetails::CreateSingletonSlot("Provider.Slot", id, 8, nullptr);
    };
    const auto messageOfMissing = [](std::uint32_t id) -> std::string {
        try {
            SODetails::GetSingletonSlot("Provider.Slot", id);
        } catch (const ServiceObjectException&) {
            return "not a standard runtime error";
        } catch (const std::runtime_error& failure) {
            return failure.what();
        }
        return "found";
    };
    EXPECT_EQ(messageOfMissing(1), "Fail to get atom singleton instance!");
    void* slot = create(1);
    EXPECT_EQ(create(1), slot);
    EXPECT_EQ(SODetails::GetSingletonSlot("Provider.Slot", 1), slot);
    EXPECT_EQ(messageOfMissing(2), "Fail to get atom singleton instance!");
    EXPECT_EQ(ThrownBy([&] { create(2); })->Message(), kOtherId);

    const Atom atom = AtomService::Resolve("Provider.Name");
    EXPECT_STREQ(AtomService::NameOf(atom), "Provider.Name");
    EXPECT_EQ(AtomService::Resolve(""), kAtomNone);
    EXPECT_EQ(AtomService::NameOf(0xFFFFFFF0), nullptr);

    VxHostTearDownSingletonStorage();
    EXPECT_EQ(ThrownBy([&] { create(1); })->Message(), kDestroyed);
    EXPECT_EQ(ThrownBy([] { AtomService::Resolve("Provider.Name"); })->Message(), kDestroyed);
    EXPECT_EQ(ThrownBy([&] { AtomService::NameOf(atom); })->Message(), kDestroyed);
}

}  // namespace
