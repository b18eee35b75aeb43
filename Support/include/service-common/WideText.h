// Text at the border between module and host. The interface carries UTF-16 code units and UTF-8
// bytes; inside, wide text is std::wstring: UTF-16 on Windows, UTF-32 on Linux. Conversion never
// fails: an unpaired surrogate crosses between the wide forms unchanged, and becomes U+FFFD in
// UTF-8. [any-thread]
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

std::u16string ToUtf16(std::wstring_view text);

std::wstring FromUtf16(std::u16string_view text);

// Appends to `target` what FromUtf16 would return.
void AppendFromUtf16(std::wstring& target, std::u16string_view text);

// The same from UTF-16-LE as it stands in a file: `units` pairs of bytes, of any alignment.
std::wstring FromUtf16LittleEndian(const std::uint8_t* bytes, std::size_t units);

// The text of a zero-terminated string; empty for null.
std::wstring FromUtf16(const char16_t* text);

std::string ToUtf8(std::wstring_view text);

void AppendUtf8(std::string& target, std::wstring_view text);

// 8-bit text that is known to be ASCII: names of subtypes, classes and the like. Other bytes
// become U+FFFD.
std::wstring FromAscii(std::string_view text);
