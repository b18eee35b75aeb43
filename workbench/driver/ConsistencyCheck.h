// Comparison of the panel's lists with fresh renderings of their documents. Preserves the session's
// state: visible container, current and expanded items, focus and held renderings. [ui-thread]
#pragma once

#include "driver/ListMarkup.h"
#include "services/Host.h"

#include <chrono>
#include <optional>

namespace Workbench {

// Compares the list of an open view with a fresh rendering, without tooltip ids and element states.
// The difference has the list on the left and the fresh rendering on the right; nullopt when they
// are equal and when the list is still being rendered. The panel must be idle, and is idle
// afterwards. Throws std::runtime_error when the panel has no container for the view, and when the
// fresh rendering exceeds the limit.
std::optional<TextDifference> CompareWithFreshList(Host& host, const Host::ViewPtr& view,
                                                   std::chrono::seconds limit);

}  // namespace Workbench
