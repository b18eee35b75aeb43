// Translates the panel's style sheets to standard CSS. The sheets use extensions of the host's
// engine (flow, state pseudo-classes, collapsing); these are translated by rule, and everything
// else is passed through unchanged. [any-thread]
#pragma once

#include <string>
#include <string_view>

namespace Workbench {

// Translates one sheet (UTF-8). Never fails: malformed input stays malformed.
std::string AdaptStyleSheet(std::string_view sheet);

}  // namespace Workbench
