// Boundaries of the tooltips in a piece of markup. An element names its tooltip, a `popup`
// inside it, by an id that is new each time; no text inside the element can know it. So the
// beginning of the tooltip, and its end right before that of its element, are where a reader
// resumes after malformed text. Searched for on the first query. UI thread.
#pragma once

#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

namespace HtmlEngine::Internal {

class TooltipBoundaries {
public:
    explicit TooltipBoundaries(std::string_view html) : html_(html) {}

    static constexpr std::size_t kNowhere = std::string_view::npos;

    // Where the tag begins that opens the tooltip with this id, at `from` or behind.
    std::size_t Beginning(std::string_view id, std::size_t from);

    // Where the tag begins that ends a tooltip together with its element, whose name is `owner`,
    // at `from` or behind.
    std::size_t End(std::string_view owner, std::size_t from);

    // Whether nothing but white space stands between `at` and an end tag of that name.
    bool IsEndTagNext(std::string_view name, std::size_t at) const;

private:
    void FindBeginnings();

    std::string_view html_;
    bool isSearched_ = false;
    // Ids and places, sorted.
    std::vector<std::pair<std::string_view, std::size_t>> beginnings_;
    // What End found last, for which name and from where.
    std::string_view endOwner_;
    std::size_t endSearchedFrom_ = 1;
    std::size_t end_ = 0;
};

}  // namespace HtmlEngine::Internal
