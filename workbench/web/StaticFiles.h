// Static files of a folder as answers. Serves only file types with a known content type, and never
// a symbolic link's target outside the folder. [any-thread]
#pragma once

#include "web/HttpServer.h"

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace Workbench {

// "text/css; charset=utf-8" for "a.css"; empty for a file type that is not served.
std::string_view ContentTypeOf(std::string_view name);

// The file's bytes; nullopt for a missing file and for one that is not served. `steps` is the path
// from ParseUrl.
std::optional<std::string> ReadServedFile(const std::filesystem::path& folder,
                                          std::span<const std::string> steps);

// The same as an answer; 404 for nullopt.
HttpAnswer ServeFile(const std::filesystem::path& folder, std::span<const std::string> steps);

}  // namespace Workbench
