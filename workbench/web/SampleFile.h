// The sample document, opened when the command line names no file.
#pragma once

#include "documents/Document.h"

#include <memory>

namespace Workbench {

inline constexpr const char* kSampleName = "sample.pdf";

// A new document with each call. Throws std::runtime_error.
std::shared_ptr<Documents::Document> OpenSample(bool listAll);

}  // namespace Workbench
