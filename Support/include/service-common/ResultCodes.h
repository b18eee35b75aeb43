// Result codes of every service-interface method, of the module's exports and of the host's
// platform libraries. Included by both sides; no dependencies, no state, any thread. A method
// answers 3 to a null pointer, of an out parameter above all, unless it says otherwise.
#pragma once

#include <cstdint>

// Unsigned 32-bit result of a call. 0, 1 and 10 are expected outcomes and are never recorded.
using ResultCode = std::uint32_t;

// Codes of methods.
inline constexpr ResultCode kResultOk = 0;              // success
inline constexpr ResultCode kResultDeclined = 1;        // success, nothing was done
inline constexpr ResultCode kResultNullPointer = 2;     // the object itself is null
inline constexpr ResultCode kResultNotInitialized = 2;  // the same number, as an exception code
inline constexpr ResultCode kResultNullArgument = 3;    // a required argument is null
inline constexpr ResultCode kResultWrongInterface = 4;  // interface id is 0 or another one
inline constexpr ResultCode kResultDamagedTable = 5;    // implausible size or no end-of-table tag
inline constexpr ResultCode kResultUnexpected = 6;      // an exception without a code of its own
inline constexpr ResultCode kResultNotFound = 8;        // what the call is about is not there
inline constexpr ResultCode kResultOutOfRange = 9;      // an index or number beyond what there is
inline constexpr ResultCode kResultNotReported = 10;    // a failure that is not reported

// Codes of the service provider and of the module's registry.
inline constexpr ResultCode kResultServiceNotInModule = 0x10005;  // the module has no such object
inline constexpr ResultCode kResultFactoryFailed = 0x10006;       // the object cannot be made
inline constexpr ResultCode kResultNoPublicObjects = 0x10007;     // the module has none
inline constexpr ResultCode kResultServiceUnknown = 0x10008;      // the provider lists no such name
inline constexpr ResultCode kResultModuleNotFound = 0x10009;      // the object's module is missing
inline constexpr ResultCode kResultFactoryNotFound = 0x1000A;     // that module lacks the export

// A template of the panel is missing, is no UTF-16-LE, or cannot be filled.
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
