#include "web/Author.h"

#include "service-common/UnicodeText.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>

namespace Workbench {

std::u16string UserName()
{
    for (const char* const variable : {"LOGNAME", "USER"}) {
        if (const char* const name = std::getenv(variable); name != nullptr && *name != '\0') {
            return UnicodeText::ToUtf16(name);
        }
    }
    const passwd* const user = ::getpwuid(::getuid());
    return user == nullptr ? std::u16string() : UnicodeText::ToUtf16(user->pw_name);
}

_PDDateRec DateOf(std::time_t time)
{
    constexpr long kHour = 3600;
    std::tm parts{};
    ::localtime_r(&time, &parts);
    const long offset = parts.tm_gmtoff;
    if (offset % kHour != 0) {
        ::gmtime_r(&time, &parts);
    }
    const auto small = [](long value) { return static_cast<std::uint16_t>(value); };
    return {small(parts.tm_year + 1900L),
            small(parts.tm_mon + 1L),
            small(parts.tm_mday),
            small(parts.tm_hour),
            small(parts.tm_min),
            small(parts.tm_sec),
            static_cast<std::int16_t>(offset % kHour == 0 ? offset / kHour : 0)};
}

}  // namespace Workbench
