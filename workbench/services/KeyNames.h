// The keys that the panel reacts to, by the names that scripts and the browser have for them:
// Enter PageUp PageDown Home End Up Down Left Right Delete. [any-thread]
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace Workbench {

// The key's code (kKey...); nothing for another name.
std::optional<std::uint32_t> KeyNamed(std::string_view name);

}  // namespace Workbench
