#include "html-engine/internal/TooltipBoundaries.h"

#include "html-engine/internal/Ascii.h"

#include <algorithm>

namespace HtmlEngine::Internal {

namespace {

constexpr std::string_view kOpening = "<popup ";
constexpr std::string_view kClosing = "</popup>";
constexpr std::string_view kId = " id=\"";

}  // namespace

void TooltipBoundaries::FindBeginnings()
{
    for (std::size_t at = html_.find(kOpening); at != kNowhere; at = html_.find(kOpening, at + 1)) {
        const std::string_view tag = html_.substr(at, html_.find_first_of("<>", at + 1) - at);
        const std::size_t id = tag.find(kId);
        if (id != kNowhere) {
            const std::string_view value = tag.substr(id + kId.size());
            beginnings_.emplace_back(value.substr(0, value.find('"')), at);
        }
    }
    std::ranges::sort(beginnings_);
}

std::size_t TooltipBoundaries::Beginning(std::string_view id, std::size_t from)
{
    if (!std::exchange(isSearched_, true)) {
        FindBeginnings();
    }
    const auto found = std::ranges::lower_bound(beginnings_, std::pair(id, from));
    return found == beginnings_.end() || found->first != id ? kNowhere : found->second;
}

std::size_t TooltipBoundaries::End(std::string_view owner, std::size_t from)
{
    if (owner == endOwner_ && from >= endSearchedFrom_ && from <= end_) {
        return end_;
    }
    std::size_t at = html_.find(kClosing, from);
    while (at != kNowhere && !IsEndTagNext(owner, at + kClosing.size())) {
        at = html_.find(kClosing, at + 1);
    }
    endOwner_ = owner;
    endSearchedFrom_ = from;
    end_ = at;
    return at;
}

bool TooltipBoundaries::IsEndTagNext(std::string_view name, std::size_t at) const
{
    const auto skipSpace = [&] {
        while (at < html_.size() && IsAsciiSpace(html_[at])) {
            ++at;
        }
    };
    skipSpace();
    if (html_.substr(std::min(at, html_.size()), 2) != "</" ||
        !EqualsIgnoringCase(html_.substr(at + 2, name.size()), name)) {
        return false;
    }
    at += 2 + name.size();
    skipSpace();
    return at < html_.size() && html_[at] == '>';
}

}  // namespace HtmlEngine::Internal
