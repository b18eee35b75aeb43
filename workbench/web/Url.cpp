#include "web/Url.h"

#include <algorithm>
#include <utility>

namespace Workbench {

namespace {

std::optional<unsigned> HexDigit(char c)
{
    if (c >= '0' && c <= '9') {
        return static_cast<unsigned>(c - '0');
    }
    const char lower = static_cast<char>(c | 0x20);
    if (lower >= 'a' && lower <= 'f') {
        return static_cast<unsigned>(lower - 'a' + 10);
    }
    return std::nullopt;
}

std::optional<std::string> Decoded(std::string_view text, bool plusIsSpace)
{
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            decoded += plusIsSpace && text[i] == '+' ? ' ' : text[i];
            continue;
        }
        const auto high = i + 2 < text.size() ? HexDigit(text[i + 1]) : std::nullopt;
        const auto low = i + 2 < text.size() ? HexDigit(text[i + 2]) : std::nullopt;
        if (!high || !low) {
            return std::nullopt;
        }
        decoded += static_cast<char>(*high << 4 | *low);
        i += 2;
    }
    return decoded;
}

// The text up to a separator, which both are taken off.
std::string_view TakePart(std::string_view& text, char separator)
{
    const std::string_view part = text.substr(0, text.find(separator));
    text.remove_prefix(std::min(text.size(), part.size() + 1));
    return part;
}

bool IsPlainStep(std::string_view step)
{
    return !step.empty() && step.front() != '.' &&
           std::none_of(step.begin(), step.end(), [](char c) {
               return static_cast<unsigned char>(c) < 0x20 || c == '/' || c == '\\' || c == ':' ||
                      c == 0x7F;
           });
}

bool ParsePath(std::string_view path, std::vector<std::string>& steps)
{
    if (path.empty() || path.front() != '/') {
        return false;
    }
    do {
        path.remove_prefix(1);
        const std::string_view raw = path.substr(0, path.find('/'));
        path.remove_prefix(raw.size());
        auto step = Decoded(raw, false);
        if (!step || !(IsPlainStep(*step) || (step->empty() && path.empty()))) {
            return false;
        }
        steps.push_back(std::move(*step));
    } while (!path.empty());
    return true;
}

}  // namespace

std::optional<Url> ParseUrl(std::string_view target)
{
    Url url;
    if (!ParsePath(TakePart(target, '?'), url.path)) {
        return std::nullopt;
    }
    while (!target.empty()) {
        std::string_view value = TakePart(target, '&');
        const auto name = Decoded(TakePart(value, '='), true);
        const auto text = Decoded(value, true);
        if (!name || !text) {
            return std::nullopt;
        }
        url.query[*name] = *text;
    }
    return url;
}

}  // namespace Workbench
