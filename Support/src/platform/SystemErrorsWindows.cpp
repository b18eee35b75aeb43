#include "platform/SystemErrors.h"

#include <windows.h>

namespace Platform {

std::uint32_t SystemError() noexcept
{
    return GetLastError();
}

void SetSystemError(std::uint32_t code) noexcept
{
    SetLastError(code);
}

std::wstring SystemErrorText(std::uint32_t code)
{
    constexpr DWORD kCapacity = 1024;
    wchar_t text[kCapacity];
    DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                  nullptr, code, 0, text, kCapacity, nullptr);
    while (length > 0 && (text[length - 1] == L'\n' || text[length - 1] == L'\r')) {
        --length;
    }
    return length == 0 ? L"Unknown error " + std::to_wstring(static_cast<std::int32_t>(code))
                       : std::wstring(text, length);
}

}  // namespace Platform
