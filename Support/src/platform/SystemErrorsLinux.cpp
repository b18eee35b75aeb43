#include "platform/SystemErrors.h"

#include <cerrno>
#include <string>

#include <locale.h>
#include <string.h>

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
    // In the C locale the text is ASCII, whatever language and character set the process has set.
    const locale_t locale = newlocale(LC_ALL_MASK, "C", locale_t());
    if (locale == locale_t()) {
        return L"Unknown error " + std::to_wstring(static_cast<int>(code));
    }
    const std::string text = strerror_l(static_cast<int>(code), locale);
    freelocale(locale);
    return std::wstring(text.begin(), text.end());
}

}  // namespace Platform
