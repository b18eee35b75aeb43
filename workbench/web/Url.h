// Path and query of a request's target. [any-thread]
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Workbench {

struct Url {
    std::vector<std::string> path;             // "/a/b" is {"a", "b"}, "/a/" is {"a", ""}
    std::map<std::string, std::string> query;  // the last value of a repeated name
};

// Splits a target and decodes its percent escapes. nullopt for a path without a leading slash, a
// malformed escape, and a path with an unsafe segment: an empty one before the end, one that begins
// with a full stop, or one with a slash, a backslash, a colon or a control character.
std::optional<Url> ParseUrl(std::string_view target);

}  // namespace Workbench
