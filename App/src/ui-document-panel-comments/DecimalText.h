// Decimal text of unsigned numbers: names of items, page indices and captions, without the cost
// and the locale of a stream.
#pragma once

#include <charconv>
#include <cstdint>
#include <string>

inline void AppendDecimal(std::wstring& target, std::uint32_t number)
{
    char digits[10];
    const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    target.append(digits, end);
}

inline std::wstring DecimalText(std::uint32_t number)
{
    std::wstring text;
    AppendDecimal(text, number);
    return text;
}
