// Names for new annotations. [any-thread]
#pragma once

#include <string>

namespace Documents {

// A random UUID (RFC 9562, version 4), such as "0b2f8c1e-9d47-4a63-8f10-5c7e2d94b6a8". Throws
// std::exception where the system has no random numbers.
std::string MakeUniqueName();

}  // namespace Documents
