// Writers of JSON text, for messages too many or too large to be built as JSON values first.
// [any-thread]
#pragma once

#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>

namespace Workbench {

// Appends a quoted string. The text is UTF-8; only the escapes that JSON requires are made.
void AppendJsonText(std::string& out, std::string_view text);

inline void AppendNumber(std::string& out, std::uint64_t number)
{
    char digits[20];
    const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    out.append(digits, end);
}

}  // namespace Workbench
