// What module and host share in memory, as a text that is the same with every compiler of 64-bit
// systems: one line for each thing, "kind subject [place]: value".
#pragma once

#include <string>

namespace SdkLayout {

// The layout of the headers that this program is built with.
std::string PublicLayout();

}  // namespace SdkLayout
