// Positions of annotations in their pages' annotation arrays, as the host reports them.
// [any-thread]
#pragma once

#include "documents/Document.h"

#include <cstdint>
#include <optional>
#include <string>

namespace Workbench {

// First position of the annotation on the page; nullopt when the page does not hold it.
std::optional<std::uint32_t> PositionOnPage(Documents::Document& document, std::uint32_t page,
                                            const _PDAnnotRec* annotation);

// "2_1": page and position. nullopt as above.
std::optional<std::string> PlaceName(Documents::Document& document, std::uint32_t page,
                                     const _PDAnnotRec* annotation);

}  // namespace Workbench
