#include "web/StaticFiles.h"

#include <algorithm>
#include <fstream>
#include <system_error>
#include <utility>

namespace Workbench {

namespace {

namespace fs = std::filesystem;

constexpr std::uintmax_t kMostBytes = std::uintmax_t{64} << 20;

struct ContentType {
    std::string_view extension;
    std::string_view type;
};

constexpr ContentType kContentTypes[] = {
    {".bcmap", "application/octet-stream"},
    {".css", "text/css; charset=utf-8"},
    {".htm", "text/html; charset=utf-8"},
    {".html", "text/html; charset=utf-8"},
    {".icc", "application/octet-stream"},
    {".ico", "image/x-icon"},
    {".js", "text/javascript; charset=utf-8"},
    {".json", "application/json"},
    {".mjs", "text/javascript; charset=utf-8"},
    {".otf", "font/otf"},
    {".pfb", "application/octet-stream"},
    {".png", "image/png"},
    {".svg", "image/svg+xml"},
    {".ttf", "font/ttf"},
    {".wasm", "application/wasm"},
    {".webmanifest", "application/manifest+json"},
    {".woff2", "font/woff2"},
};

// Whether a path, with symbolic links resolved, is below a folder.
bool IsBelow(const fs::path& folder, const fs::path& path)
{
    return std::mismatch(folder.begin(), folder.end(), path.begin(), path.end()).first ==
           folder.end();
}

}  // namespace

std::string_view ContentTypeOf(std::string_view name)
{
    const std::size_t point = name.rfind('.');
    if (point == std::string_view::npos) {
        return {};
    }
    for (const auto& [extension, type] : kContentTypes) {
        if (extension == name.substr(point)) {
            return type;
        }
    }
    return {};
}

std::optional<std::string> ReadServedFile(const fs::path& folder,
                                          std::span<const std::string> steps)
{
    if (steps.empty() || ContentTypeOf(steps.back()).empty()) {
        return std::nullopt;
    }
    fs::path path = folder;
    for (const std::string& step : steps) {
        path /= step;
    }
    std::error_code error;
    const fs::path root = fs::canonical(folder, error);
    const fs::path file = error ? fs::path() : fs::canonical(path, error);
    if (error || !IsBelow(root, file) || !fs::is_regular_file(file, error)) {
        return std::nullopt;
    }
    const std::uintmax_t size = fs::file_size(file, error);
    if (error || size > kMostBytes) {
        return std::nullopt;
    }
    std::string bytes(static_cast<std::size_t>(size), '\0');
    std::ifstream stream(file, std::ios::binary);
    if (!stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()))) {
        return std::nullopt;
    }
    return bytes;
}

HttpAnswer ServeFile(const fs::path& folder, std::span<const std::string> steps)
{
    std::optional<std::string> bytes = ReadServedFile(folder, steps);
    if (!bytes) {
        return {.status = 404};
    }
    return {.contentType = std::string(ContentTypeOf(steps.back())),
            .body = std::make_shared<const std::string>(std::move(*bytes))};
}

}  // namespace Workbench
