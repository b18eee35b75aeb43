// Files of a folder as answers. Only kinds of files that a page needs are served, under their
// content types, and nothing that a link leads to outside of the folder. [any-thread]
#pragma once

#include "web/HttpServer.h"

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace Workbench {

// "text/css; charset=utf-8" for "a.css"; empty for a kind of file that is not served.
std::string_view ContentTypeOf(std::string_view name);

// The file's bytes; nothing when there is no such file or it is not to be served. The steps come
// from ParseUrl.
std::optional<std::string> ReadServedFile(const std::filesystem::path& folder,
                                          std::span<const std::string> steps);

// The same as an answer: 404 when there is nothing.
HttpAnswer ServeFile(const std::filesystem::path& folder, std::span<const std::string> steps);

}  // namespace Workbench
