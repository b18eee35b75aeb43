#include "ui-engine/NarrowText.h"

#include "service-common/EncodingConversion.h"
#include "service-common/WideText.h"

#include <cstdint>

std::string ToNarrow(std::wstring_view text)
{
    const std::u16string units = ToUtf16(text);
    const auto length = static_cast<std::uint32_t>(units.size());
    std::uint32_t needed = 0;
    VxConvertUnicodeToACP(units.data(), length, nullptr, 0, &needed);
    std::string result(needed, '\0');
    VxConvertUnicodeToACP(units.data(), length, result.data(), needed, &needed);
    return result;
}

std::wstring FromNarrow(std::string_view text)
{
    const auto length = static_cast<std::uint32_t>(text.size());
    std::uint32_t needed = 0;
    VxConvertACPToUnicode(text.data(), length, nullptr, 0, &needed);
    std::u16string units(needed, u'\0');
    VxConvertACPToUnicode(text.data(), length, units.data(), needed, &needed);
    return FromUtf16(units);
}
