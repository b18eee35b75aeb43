// Errors of the operating system, with its own codes: errno on Linux. [any-thread]
#pragma once

#include <cstdint>
#include <string>

namespace Platform {

// The platform's error code of the calling thread's last failing system call; 0: none.
std::uint32_t SystemError() noexcept;
void SetSystemError(std::uint32_t code) noexcept;

// The platform's message text for one of its error codes, without a line break at the end; in the
// user's language on Windows, in English on Linux. "Unknown error" and the code where the platform
// has no text; never empty.
std::wstring SystemErrorText(std::uint32_t code);

}  // namespace Platform
