// JSON written piece by piece into a string, for messages that are too many or too big to be built
// as values first. [any-thread]
#pragma once

#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>

namespace Workbench {

// Appends a text in quotes. The text is UTF-8; only what JSON demands is escaped.
void AppendJsonText(std::string& out, std::string_view text);

inline void AppendNumber(std::string& out, std::uint64_t number)
{
    char digits[20];
    const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    out.append(digits, end);
}

}  // namespace Workbench
