// The panel's style sheets as a browser understands them. They are written for an engine with a few
// notions of its own (flow, states, collapsing); those are put into standard CSS by rule, and
// everything else is passed on as it stands. [any-thread]
#pragma once

#include <string>
#include <string_view>

namespace Workbench {

// Adapts one sheet (UTF-8). Never fails: what is malformed stays malformed.
std::string AdaptStyleSheet(std::string_view sheet);

}  // namespace Workbench
