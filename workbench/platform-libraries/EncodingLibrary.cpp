#include "platform/LibraryExport.h"
#include "service-common/EncodingConversion.h"
#include "service-common/UnicodeText.h"

#include <algorithm>
#include <exception>
#include <limits>
#include <string>
#include <string_view>

#if defined(_WIN32)
#include <windows.h>
#endif

namespace {

#if defined(_WIN32)

// The system's ANSI code page.
std::string ToNarrow(std::u16string_view text)
{
    // Code pages disagree about what becomes of half a pair.
    const std::u16string paired = UnicodeText::WithoutUnpairedSurrogates(text, u'?');
    const std::wstring whole(paired.begin(), paired.end());
    const bool isUnicode = GetACP() == CP_UTF8;  // which takes no substitute
    const DWORD flags = isUnicode ? 0 : WC_NO_BEST_FIT_CHARS;
    const char* substitute = isUnicode ? nullptr : "?";
    const int units = static_cast<int>(whole.size());
    const int needed =
        WideCharToMultiByte(CP_ACP, flags, whole.data(), units, nullptr, 0, substitute, nullptr);
    std::string result(static_cast<std::size_t>(std::max(needed, 0)), '\0');
    WideCharToMultiByte(CP_ACP, flags, whole.data(), units, result.data(), needed, substitute,
                        nullptr);
    return result;
}

std::u16string ToWide(std::string_view text)
{
    const int bytes = static_cast<int>(text.size());
    const int needed = MultiByteToWideChar(CP_ACP, 0, text.data(), bytes, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(std::max(needed, 0)), L'\0');
    MultiByteToWideChar(CP_ACP, 0, text.data(), bytes, wide.data(), needed);
    return {wide.begin(), wide.end()};
}

#else

// The narrow code page is UTF-8.
std::string ToNarrow(std::u16string_view text)
{
    return UnicodeText::ToUtf8(text, U'?');
}

std::u16string ToWide(std::string_view text)
{
    return UnicodeText::ToUtf16(text);
}

#endif

// The largest text that the systems' own converters take.
constexpr std::uint32_t kLongestText = std::numeric_limits<std::int32_t>::max();

// The shape that both conversions share: what is needed, whether it fits, the copy.
template <class From, class To, class Convert>
ResultCode ConvertInto(const From* text, std::uint32_t length, To* buffer, std::uint32_t capacity,
                       std::uint32_t* needed, Convert convert)
{
    if (needed == nullptr) {
        return kResultNullArgument;
    }
    *needed = 0;
    if (text == nullptr && length != 0) {
        return kResultNullArgument;
    }
    if (length > kLongestText) {
        return kResultOutOfRange;
    }
    try {
        const std::basic_string<To> converted =
            length == 0 ? std::basic_string<To>()
                        : convert(std::basic_string_view<From>(text, length));
        if (converted.size() > kLongestText) {
            return kResultOutOfRange;
        }
        *needed = static_cast<std::uint32_t>(converted.size());
        if (buffer == nullptr || capacity < *needed) {
            return kResultDeclined;
        }
        std::copy(converted.begin(), converted.end(), buffer);
        return kResultOk;
    } catch (const std::exception&) {
        return kResultUnexpected;
    }
}

}  // namespace

extern "C" {

LIBRARY_EXPORT ResultCode VxConvertUnicodeToACP(const char16_t* text, std::uint32_t length,
                                                char* buffer, std::uint32_t capacity,
                                                std::uint32_t* needed)
{
    return ConvertInto(text, length, buffer, capacity, needed, ToNarrow);
}

LIBRARY_EXPORT ResultCode VxConvertACPToUnicode(const char* text, std::uint32_t length,
                                                char16_t* buffer, std::uint32_t capacity,
                                                std::uint32_t* needed)
{
    return ConvertInto(text, length, buffer, capacity, needed, ToWide);
}

}  // extern "C"
