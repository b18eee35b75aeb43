// Texts in the user's language, from the host's "LocaleManager". The key is the default text: it
// is returned when the service lacks the lookup or knows no such key. Throws
// ServiceObjectException when the service cannot be had or a lookup fails. [any-thread]
#pragma once

#include <string>
#include <string_view>

std::wstring LocalizedString(std::wstring_view key);

// A key that belongs to a section, such as the labels of the tooltip.
std::wstring LocalizedString(std::wstring_view section, std::wstring_view key);
