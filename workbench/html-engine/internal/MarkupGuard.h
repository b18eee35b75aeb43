#pragma once

// Makes markup bearable for the parser before it sees it. The parser's time grows with the square
// of the nesting depth and of the number of attributes in one tag, and no page needs either. So:
//
// - start tags that would nest deeper than a limit are left out, their content stays. The limit is
//   512, and more for short markup: tags times depth stay bounded. The depth is estimated from the
//   tags alone, in the manner of an HTML parser but without most of its repairs: unclosed elements
//   count as open until something around them is closed;
// - of one tag the first 512 attributes count;
// - `frameset` tags are left out: they would take the page's body away.
//
// Markup within the limits, which is all that the panel ever produces, passes untouched. An
// estimate can be fooled by markup made for it; then GumboArena's limits hold.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace HtmlEngine::Internal {

class MarkupGuard {
public:
    /// With `dropFormatting` the tags of formatting elements (`b`, `font`, ...), which a parser
    /// multiplies, are left out as well.
    explicit MarkupGuard(bool dropFormatting) : dropFormatting_(dropFormatting) {}

    /// `html` itself when nothing had to go, else a copy that lives as long as this object.
    std::string_view Limit(std::string_view html);

private:
    struct OpenElement {
        std::string_view name;
        unsigned traits;
    };

    struct Tag {
        std::string_view name;
        unsigned traits = 0;
        std::size_t end = 0;
        /// Where the first attribute beyond the limit begins, 0 when there is none.
        std::size_t surplus = 0;
        bool closesItself = false;
    };

    Tag ReadTag(std::size_t nameAt) const;
    std::size_t SkipComment(std::size_t at) const;
    bool OpenElementIsRefused(const Tag& tag);
    void CloseElement(const Tag& tag);
    void LeaveOut(std::size_t from, std::size_t to);

    bool dropFormatting_;
    std::string_view html_;
    std::size_t depthLimit_ = 0;
    std::vector<OpenElement> open_;
    /// How many `svg` and `math` elements are open: only inside them "/>" closes an element.
    std::size_t foreignDepth_ = 0;
    std::string kept_;
    std::size_t copied_ = 0;
    bool leftOut_ = false;
};

}  // namespace HtmlEngine::Internal
