// The host's encoding-conversion library: UTF-16 and the narrow code page of the system, in which
// CSS selectors and the texts of standard exceptions are written. [any-thread]
#pragma once

#include "service-common/ResultCodes.h"

#include <cstdint>

extern "C" {

// Converts `length` UTF-16 code units at `text`. `*needed` receives the number of bytes of the
// whole result (no terminating zero). Writes nothing but `*needed` when `capacity` is too small
// or `buffer` is null, and returns kResultDeclined then, else 0. A character that the code page
// lacks and an unpaired surrogate become "?". Fails with 3 when `needed` is null, or `text` is
// null while `length` is not 0.
ResultCode VxConvertUnicodeToACP(const char16_t* text, std::uint32_t length, char* buffer,
                                 std::uint32_t capacity, std::uint32_t* needed);

// The reverse, counting in UTF-16 code units. Bytes that are no text become U+FFFD.
ResultCode VxConvertACPToUnicode(const char* text, std::uint32_t length, char16_t* buffer,
                                 std::uint32_t capacity, std::uint32_t* needed);

}  // extern "C"
