// Base of fixtures: a host whose services and storage begin and end with the test. Fails a test
// that leaves a fake alive or an error record on its thread that it did not take.
#pragma once

#include "FakeServiceObject.h"

#include "service-common/ServiceObjectException.h"

#include <gtest/gtest.h>

#include <optional>

namespace Fakes {

class HostFixture : public testing::Test {
protected:
    HostFixture();
    ~HostFixture() override;

    // Lists the fake with the service provider under its interface's name.
    template <class I>
    static void Provide(const Fake<I>& service)
    {
        ProvideAs(I::kName, service.Get());
    }
    static void ProvideAs(const char* name, ServiceObject* service);

    // The calling thread's error record, which is gone afterwards.
    static std::optional<ErrorRecord> TakeError();
};

// The ServiceObjectException that `work` ends with, if it does.
template <class Work>
std::optional<ServiceObjectException> ThrownBy(Work&& work)
{
    try {
        work();
        return std::nullopt;
    } catch (const ServiceObjectException& failure) {
        return failure;
    }
}

}  // namespace Fakes
