// Keys that the panel handles, with their names in scripts and browsers. [any-thread]
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace Workbench {

struct NamedKey {
    std::string_view name;         // in scripts
    std::string_view browserName;  // KeyboardEvent.key
    std::uint32_t code;            // kKey...
};
std::span<const NamedKey> PanelKeys();

// The code of a key by either name; nullopt for an unknown name.
std::optional<std::uint32_t> KeyNamed(std::string_view name);

}  // namespace Workbench
