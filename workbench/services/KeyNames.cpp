#include "services/KeyNames.h"

#include "ui-engine/HtmlElementTypes.h"

#include <algorithm>
#include <iterator>

namespace Workbench {

namespace {

struct Key {
    std::string_view name;
    std::uint32_t code;
};

constexpr Key kKeys[] = {
    {"Enter", kKeyEnter}, {"PageUp", kKeyPageUp}, {"PageDown", kKeyPageDown}, {"Home", kKeyHome},
    {"End", kKeyEnd},     {"Up", kKeyUpArrow},    {"Down", kKeyDownArrow},    {"Left", kKeyLeft},
    {"Right", kKeyRight}, {"Delete", kKeyDelete},
};

}  // namespace

std::optional<std::uint32_t> KeyNamed(std::string_view name)
{
    const auto* const found = std::find_if(std::begin(kKeys), std::end(kKeys),
                                           [name](const Key& key) { return key.name == name; });
    return found == std::end(kKeys) ? std::nullopt : std::optional(found->code);
}

}  // namespace Workbench
