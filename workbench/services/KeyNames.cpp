#include "services/KeyNames.h"

#include "ui-engine/HtmlElementTypes.h"

namespace Workbench {

namespace {

constexpr NamedKey kKeys[] = {
    {"Enter", "Enter", kKeyEnter},
    {"PageUp", "PageUp", kKeyPageUp},
    {"PageDown", "PageDown", kKeyPageDown},
    {"Home", "Home", kKeyHome},
    {"End", "End", kKeyEnd},
    {"Up", "ArrowUp", kKeyUpArrow},
    {"Down", "ArrowDown", kKeyDownArrow},
    {"Left", "ArrowLeft", kKeyLeft},
    {"Right", "ArrowRight", kKeyRight},
    {"Delete", "Delete", kKeyDelete},
};

}  // namespace

std::span<const NamedKey> PanelKeys()
{
    return kKeys;
}

std::optional<std::uint32_t> KeyNamed(std::string_view name)
{
    for (const NamedKey& key : kKeys) {
        if (key.name == name || key.browserName == name) {
            return key.code;
        }
    }
    return std::nullopt;
}

}  // namespace Workbench
