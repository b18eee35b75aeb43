#include "platform/SystemErrors.h"

#include <cerrno>
#include <string>
#include <system_error>

namespace Platform {

std::uint32_t SystemError() noexcept
{
    return static_cast<std::uint32_t>(errno);
}

void SetSystemError(std::uint32_t code) noexcept
{
    errno = static_cast<int>(code);
}

std::wstring SystemErrorText(std::uint32_t code)
{
    const std::string text = std::generic_category().message(static_cast<int>(code));
    return std::wstring(text.begin(), text.end());
}

}  // namespace Platform
