// The path and the query of a request's target. [any-thread]
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Workbench {

struct Url {
    std::vector<std::string> path;             // "/a/b" is {"a", "b"}, "/a/" is {"a", ""}
    std::map<std::string, std::string> query;  // of a name that comes twice, the last one
};

// Takes a target apart and decodes its %XX. Nothing for a path that does not begin with a slash, an
// escape that is none, and a path with a step that could lead out of its folder or hide a file: an
// empty one before the end, one that begins with a point, or one with a slash, a backslash, a colon
// or a control character in it.
std::optional<Url> ParseUrl(std::string_view target);

}  // namespace Workbench
