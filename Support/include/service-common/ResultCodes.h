// Result codes of every service-interface method, of the module's exports and of the host's
// platform libraries. Included by both sides; no dependencies, no state, any thread.
#pragma once

#include <cstdint>

// Unsigned 32-bit result of a call. 0, 1 and 10 are expected outcomes and are never recorded.
using ResultCode = std::uint32_t;

inline constexpr ResultCode kResultOk = 0;
inline constexpr ResultCode kResultDeclined = 1;        // success, nothing was done
inline constexpr ResultCode kResultNullPointer = 2;     // the object itself is null
inline constexpr ResultCode kResultNotInitialized = 2;  // the same number, as an exception code
inline constexpr ResultCode kResultNullArgument = 3;    // a required argument is null
inline constexpr ResultCode kResultWrongInterface = 4;  // interface id is 0 or another one
inline constexpr ResultCode kResultDamagedTable = 5;    // implausible size or no end-of-table tag
inline constexpr ResultCode kResultUnexpected = 6;      // an exception without a code of its own
inline constexpr ResultCode kResultNotFound = 8;
inline constexpr ResultCode kResultOutOfRange = 9;
inline constexpr ResultCode kResultNotReported = 10;  // a failure that is not reported

inline constexpr ResultCode kResultServiceNotInModule = 0x10005;
inline constexpr ResultCode kResultFactoryFailed = 0x10006;
inline constexpr ResultCode kResultNoPublicObjects = 0x10007;
inline constexpr ResultCode kResultServiceUnknown = 0x10008;
inline constexpr ResultCode kResultModuleNotFound = 0x10009;
inline constexpr ResultCode kResultFactoryNotFound = 0x1000A;

inline constexpr ResultCode kResultTemplateFailed = 0x40009;

// True for the outcomes that the check and reporting rules let pass: 0, 1 and 10.
constexpr bool IsExpectedResult(ResultCode code) noexcept
{
    return code == kResultOk || code == kResultDeclined || code == kResultNotReported;
}

// Codes that say that what a call is about is not there, such as a page that has been removed.
constexpr bool IsAbsence(ResultCode code) noexcept
{
    return code == kResultNotFound || code == kResultOutOfRange;
}
