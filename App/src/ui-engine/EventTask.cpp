#include "ui-engine/internal/EventTask.h"

#include "service-common/ErrorRecord.h"
#include "service-common/ServiceObjectException.h"
#include "ui-engine/NarrowText.h"

#include <exception>

namespace SODetails {
namespace {

// The record of the exception that is being handled. Throws when memory is short.
ErrorRecord RecordOfException(const char* function)
{
    constexpr const char* kFile = "include/ui-engine/internal/EventTask";
    try {
        throw;
    } catch (const ServiceObjectException& failure) {
        return failure.Record();
    } catch (const std::exception& failure) {
        return {kResultUnexpected, FromNarrow(failure.what()), function, kFile, __LINE__};
    } catch (...) {
        return {kResultUnexpected, L"unknown exception", function, kFile, __LINE__};
    }
}

}  // namespace

void RecordTaskFailure(const char* function) noexcept
{
    try {
        SetThreadLastError(RecordOfException(function));
    } catch (...) {
        SetThreadLastError({kResultUnexpected, {}, {}, {}, 0});
    }
}

}  // namespace SODetails
