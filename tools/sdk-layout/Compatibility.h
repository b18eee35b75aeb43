// What has changed between two layouts (PublicLayout.h), and which of it breaks those who were
// built with the former one.
#pragma once

#include <string>
#include <vector>

namespace SdkLayout {

struct Comparison {
    std::vector<std::string> breaks;     // what was, what is, and the rule that forbids it
    std::vector<std::string> additions;  // what is new and harms nobody
};

// Compares the layout of a release with the present one. Lines that are no layout are ignored.
Comparison Compare(const std::string& released, const std::string& present);

}  // namespace SdkLayout
