// Normalisation of a list's markup, so that two renderings of the same comments are equal.
// [any-thread]
#pragma once

#include <optional>
#include <string>

namespace Workbench {

// Replaces the tooltip ids, which are new in every rendering, by "#1", "#2" and so on in order of
// appearance.
std::string WithNumberedTooltips(const std::string& html);

// Removes the templates' white space between tags; white space of contents is kept.
std::string WithoutIndents(const std::string& html);

// First difference of two texts: a short excerpt of each, beginning at the last common tag when
// there is one. UTF-8.
struct TextDifference {
    std::string left;
    std::string right;
};

// nullopt when the texts are equal.
std::optional<TextDifference> FindDifference(const std::string& left, const std::string& right);

}  // namespace Workbench
