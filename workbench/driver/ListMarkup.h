// The markup of a list in a form in which two renderings of the same comments are equal. Used on
// any thread.
#pragma once

#include <optional>
#include <string>

namespace Workbench {

// Tooltips have ids of their own in every rendering: each is replaced by "#1", "#2" and so on, in
// order of appearance.
std::string WithNumberedTooltips(const std::string& html);

// Without the white space of the templates that parts one tag from the next; that of contents
// stays.
std::string WithoutIndents(const std::string& html);

// Where two texts part: a short piece of each from there on, beginning a little before, at the tag
// that both still have where there is one. UTF-8.
struct TextDifference {
    std::string left;
    std::string right;
};

// Nothing when they are equal.
std::optional<TextDifference> FindDifference(const std::string& left, const std::string& right);

}  // namespace Workbench
