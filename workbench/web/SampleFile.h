// The document that the workbench opens when none is named.
#pragma once

#include "documents/Document.h"

#include <memory>

namespace Workbench {

inline constexpr const char* kSampleName = "sample.pdf";

// A new one each time. Throws std::runtime_error.
std::shared_ptr<Documents::Document> OpenSample(bool listAll);

}  // namespace Workbench
