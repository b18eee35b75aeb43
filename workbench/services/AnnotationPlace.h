// Where annotations stand in their documents, as the host reports it: by position in a page's
// annotation array. [any-thread]
#pragma once

#include "documents/Document.h"

#include <cstdint>
#include <optional>
#include <string>

namespace Workbench {

// First position of the annotation on the page; nothing when the page does not show it.
std::optional<std::uint32_t> PositionOnPage(Documents::Document& document, std::uint32_t page,
                                            const _PDAnnotRec* annotation);

// "2_1": page and position. Nothing as above.
std::optional<std::string> PlaceName(Documents::Document& document, std::uint32_t page,
                                     const _PDAnnotRec* annotation);

}  // namespace Workbench
