// Text in the narrow code page of the system: CSS selectors and the texts of standard exceptions.
// Converted by the host's encoding library. [any-thread]
#pragma once

#include <string>
#include <string_view>

std::string ToNarrow(std::wstring_view text);

std::wstring FromNarrow(std::string_view text);
