#include "driver/ListMarkup.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <unordered_map>

namespace Workbench {

namespace {

constexpr std::string_view kBlanks = " \r\n";
constexpr std::size_t kIdLength = 36;  // of a UUID

bool IsTooltipId(std::string_view id)
{
    return id.size() == kIdLength && id[8] == '-';
}

// The nearest beginning of a character at or before a position.
std::size_t CharacterStart(std::string_view text, std::size_t at)
{
    while (at > 0 && at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80) {
        --at;
    }
    return std::min(at, text.size());
}

// Whether the blanks up to `end` stand between tags, outside of contents: those hold no line break,
// as each has become an element.
bool IsIndent(std::string_view html, std::size_t begin, std::size_t end)
{
    constexpr std::string_view kPageItem = "<ul page-item";
    if ((begin != 0 && html[begin - 1] != '>') || (end != html.size() && html[end] != '<')) {
        return false;
    }
    return html.substr(begin, end - begin).find_first_of("\r\n") != html.npos ||
           end == html.size() || html.substr(end, kPageItem.size()) == kPageItem;
}

}  // namespace

std::string WithNumberedTooltips(const std::string& html)
{
    constexpr std::string_view kPrefix = "id=\"";  // of titleid and of id
    const std::string_view text = html;
    std::unordered_map<std::string_view, std::size_t> numbers;
    std::string result;
    result.reserve(text.size());
    std::size_t taken = 0;
    for (std::size_t at = text.find(kPrefix); at != text.npos; at = text.find(kPrefix, at)) {
        at += kPrefix.size();
        const std::string_view id = text.substr(at, text.find('"', at) - at);
        if (IsTooltipId(id)) {
            const auto number = numbers.emplace(id, numbers.size() + 1).first->second;
            result.append(text, taken, at - taken).append("#").append(std::to_string(number));
            taken = at + kIdLength;
        }
    }
    result.append(text, taken);
    return result;
}

std::string WithoutIndents(const std::string& html)
{
    std::string text;
    text.reserve(html.size());
    for (std::size_t at = 0; at < html.size();) {
        const std::size_t next = std::min(html.find_first_not_of(kBlanks, at), html.size());
        if (!IsIndent(html, at, next)) {
            text.append(html, at, next - at);
        }
        at = std::min(html.find_first_of(kBlanks, next), html.size());
        text.append(html, next, at - next);
    }
    return text;
}

std::optional<TextDifference> FindDifference(const std::string& left, const std::string& right)
{
    constexpr std::size_t kMostBefore = 80;
    constexpr std::size_t kLength = 160;
    const auto parting = std::mismatch(left.begin(), left.end(), right.begin(), right.end());
    if (parting.first == left.end() && parting.second == right.end()) {
        return std::nullopt;
    }
    const auto common = static_cast<std::size_t>(parting.first - left.begin());
    const std::size_t earliest = common - std::min(common, kMostBefore);
    const std::size_t tag = std::string_view(left).substr(0, common).rfind('<');
    const std::size_t start =
        CharacterStart(left, tag != left.npos && tag >= earliest ? tag : earliest);
    const auto piece = [start](const std::string& text) {
        return text.substr(start, CharacterStart(text, start + kLength) - start);
    };
    return TextDifference{piece(left), piece(right)};
}

}  // namespace Workbench
