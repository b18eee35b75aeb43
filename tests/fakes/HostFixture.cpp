#include "HostFixture.h"

#include "platform-libraries/AtomLibraryHost.h"
#include "platform-libraries/ServiceProviderHost.h"
#include "service-common/WideText.h"

namespace Fakes {

HostFixture::HostFixture()
{
    ClearThreadLastError();
    EXPECT_EQ(FakeObject::Living(), 0) << "left by an earlier test";
}

HostFixture::~HostFixture()
{
    VxHostUnregisterAllServices();
    VxHostRestartSingletonStorage();
    EXPECT_EQ(FakeObject::Living(), 0) << "fakes outlive the test";
    if (const auto error = TakeError()) {
        ADD_FAILURE() << "error record left: " << error->code << " " << ToUtf8(error->message)
                      << " by " << error->function;
    }
}

void HostFixture::ProvideAs(const char* name, ServiceObject* service)
{
    ASSERT_EQ(VxHostRegisterService(name, service), kResultOk);
}

std::optional<ErrorRecord> HostFixture::TakeError()
{
    std::optional<ErrorRecord> taken;
    if (const ErrorRecord* error = ThreadLastError()) {
        taken = *error;
    }
    ClearThreadLastError();
    return taken;
}

}  // namespace Fakes
