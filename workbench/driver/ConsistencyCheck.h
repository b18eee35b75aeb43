// Whether the lists that the panel holds are what a rendering of their documents would give now.
// Leaves the session as it was: what is visible, current, expanded, focused, and held back.
// [ui-thread]
#pragma once

#include "driver/ListMarkup.h"
#include "services/Host.h"

#include <chrono>
#include <optional>

namespace Workbench {

// Compares the list of an open view with a fresh one, ids of tooltips and states of elements left
// aside: the list is on the left of the difference, the fresh one on the right. Nothing when they
// are equal, and for a list that is still being rendered. The panel is idle before and after.
// Throws std::runtime_error when the panel has no container for the view, and when the fresh
// rendering takes longer than the limit.
std::optional<TextDifference> CompareWithFreshList(Host& host, const Host::ViewPtr& view,
                                                   std::chrono::seconds limit);

}  // namespace Workbench
