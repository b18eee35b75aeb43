#include <html-engine/internal/MarkupGuard.h>

#include <algorithm>
#include <array>
#include <cstdint>

#include <html-engine/internal/Ascii.h>

namespace HtmlEngine::Internal {

namespace {

constexpr std::size_t kLeastDepthLimit = 512;

/// Start tags times depth that the parser still masters in a fraction of a second.
constexpr std::size_t kDepthTimesTags = std::size_t{1} << 27;

constexpr std::size_t kMostAttributes = 512;

/// The parser is handed shorter markup as it is: nothing in it can get out of hand.
constexpr std::size_t kHarmlessLength = 1024;

// How an element behaves when tags around it are closed.
constexpr unsigned kVoid = 1;        // never open
constexpr unsigned kBlock = 2;       // no end tag of an inline element reaches across it
constexpr unsigned kScope = 4;       // no end tag of a block inside reaches across it
constexpr unsigned kFormatting = 8;  // its end tag leaves open what was opened inside
constexpr unsigned kForeignRoot = 16;
constexpr unsigned kFrameset = 32;
constexpr unsigned kEndedByNext = 64;  // closed by the next one of its name

struct NameTraits {
    std::string_view name;
    unsigned traits;
};

// Sorted by name.
constexpr auto kTraits = std::to_array<NameTraits>({
    {"a", kFormatting},
    {"address", kBlock},
    {"applet", kBlock | kScope},
    {"area", kVoid},
    {"article", kBlock},
    {"aside", kBlock},
    {"b", kFormatting},
    {"base", kVoid},
    {"basefont", kVoid},
    {"bgsound", kVoid},
    {"big", kFormatting},
    {"blockquote", kBlock},
    {"body", kBlock},
    {"br", kVoid},
    {"button", kBlock},
    {"caption", kBlock | kScope},
    {"center", kBlock},
    {"code", kFormatting},
    {"col", kVoid},
    {"colgroup", kBlock},
    {"dd", kBlock | kEndedByNext},
    {"details", kBlock},
    {"dir", kBlock},
    {"div", kBlock},
    {"dl", kBlock},
    {"dt", kBlock | kEndedByNext},
    {"em", kFormatting},
    {"embed", kVoid},
    {"fieldset", kBlock},
    {"figcaption", kBlock},
    {"figure", kBlock},
    {"font", kFormatting},
    {"footer", kBlock},
    {"form", kBlock},
    {"frame", kVoid},
    {"frameset", kFrameset},
    {"h1", kBlock},
    {"h2", kBlock},
    {"h3", kBlock},
    {"h4", kBlock},
    {"h5", kBlock},
    {"h6", kBlock},
    {"head", kBlock},
    {"header", kBlock},
    {"hgroup", kBlock},
    {"hr", kVoid},
    {"html", kBlock | kScope},
    {"i", kFormatting},
    {"iframe", kBlock},
    {"image", kVoid},
    {"img", kVoid},
    {"input", kVoid},
    {"keygen", kVoid},
    {"li", kBlock | kEndedByNext},
    {"link", kVoid},
    {"listing", kBlock},
    {"main", kBlock},
    {"marquee", kBlock | kScope},
    {"math", kForeignRoot},
    {"menu", kBlock},
    {"meta", kVoid},
    {"nav", kBlock},
    {"nobr", kFormatting},
    {"object", kBlock | kScope},
    {"ol", kBlock},
    {"option", kEndedByNext},
    {"p", kBlock | kEndedByNext},
    {"param", kVoid},
    {"plaintext", kBlock},
    {"pre", kBlock},
    {"s", kFormatting},
    {"section", kBlock},
    {"select", kBlock},
    {"small", kFormatting},
    {"source", kVoid},
    {"strike", kFormatting},
    {"strong", kFormatting},
    {"summary", kBlock},
    {"svg", kForeignRoot},
    {"table", kBlock | kScope},
    {"tbody", kBlock},
    {"td", kBlock | kScope | kEndedByNext},
    {"template", kBlock | kScope},
    {"tfoot", kBlock},
    {"th", kBlock | kScope | kEndedByNext},
    {"thead", kBlock},
    {"tr", kBlock | kEndedByNext},
    {"track", kVoid},
    {"tt", kFormatting},
    {"u", kFormatting},
    {"ul", kBlock},
    {"wbr", kVoid},
});

static_assert(std::is_sorted(kTraits.begin(), kTraits.end(),
                             [](const NameTraits& a, const NameTraits& b) {
                                 return a.name < b.name;
                             }));

constexpr std::size_t kLongestName = 10;

unsigned TraitsOf(std::string_view name)
{
    if (name.size() > kLongestName) {
        return 0;
    }
    std::array<char, kLongestName> buffer{};
    std::transform(name.begin(), name.end(), buffer.begin(), ToAsciiLower);
    const std::string_view lower(buffer.data(), name.size());
    const auto found = std::lower_bound(
        kTraits.begin(), kTraits.end(), lower,
        [](const NameTraits& entry, std::string_view key) { return entry.name < key; });
    return found != kTraits.end() && found->name == lower ? found->traits : 0;
}

}  // namespace

std::string_view MarkupGuard::Limit(std::string_view html)
{
    html_ = html;
    if (html.size() <= kHarmlessLength && !dropFormatting_) {
        return html;
    }
    const auto tags = static_cast<std::size_t>(std::count(html.begin(), html.end(), '<'));
    depthLimit_ = std::max(kLeastDepthLimit, kDepthTimesTags / std::max<std::size_t>(tags, 1));

    std::size_t at = html.find('<');
    while (at != std::string_view::npos && at + 1 < html.size()) {
        const bool isEndTag = html[at + 1] == '/';
        const std::size_t nameAt = at + (isEndTag ? 2 : 1);
        std::size_t end = at + 1;
        if (html.substr(at, 4) == "<!--") {
            end = SkipComment(at + 4);
        } else if (nameAt < html.size() && IsAsciiLetter(html[nameAt])) {
            const Tag tag = ReadTag(nameAt);
            end = tag.end;
            if ((tag.traits & kFrameset) != 0 ||
                (dropFormatting_ && (tag.traits & kFormatting) != 0)) {
                LeaveOut(at, end);
            } else if (isEndTag) {
                CloseElement(tag);
            } else if (OpenElementIsRefused(tag)) {
                LeaveOut(at, end);
            } else if (tag.surplus != 0) {
                LeaveOut(tag.surplus, end - 1);
            }
        }
        at = html.find('<', end);
    }
    if (!leftOut_) {
        return html;
    }
    kept_.append(html.substr(copied_));
    return kept_;
}

void MarkupGuard::LeaveOut(std::size_t from, std::size_t to)
{
    leftOut_ = true;
    kept_.append(html_.substr(copied_, from - copied_));
    copied_ = to;
}

std::size_t MarkupGuard::SkipComment(std::size_t at) const
{
    // "<!-->" and "<!--->" are whole comments.
    if (html_.substr(at, 1) == ">" || html_.substr(at, 2) == "->") {
        return at + 1;
    }
    for (at = html_.find("--", at); at != std::string_view::npos; at = html_.find("--", at + 1)) {
        if (html_.substr(at + 2, 1) == ">" || html_.substr(at + 2, 2) == "!>") {
            return at + 3;
        }
    }
    return html_.size();
}

MarkupGuard::Tag MarkupGuard::ReadTag(std::size_t nameAt) const
{
    Tag tag;
    std::size_t at = nameAt;
    const auto endsName = [&](std::size_t place) {
        return IsAsciiSpace(html_[place]) || html_[place] == '/' || html_[place] == '>';
    };
    while (at < html_.size() && !endsName(at)) {
        ++at;
    }
    tag.name = html_.substr(nameAt, at - nameAt);
    tag.traits = TraitsOf(tag.name);
    std::size_t attributes = 0;
    while (true) {
        while (at < html_.size() && (IsAsciiSpace(html_[at]) || html_[at] == '/')) {
            ++at;
        }
        if (at >= html_.size() || html_[at] == '>') {
            break;
        }
        if (++attributes == kMostAttributes + 1) {
            tag.surplus = at;
        }
        // The name; a '=' in its first place belongs to it.
        ++at;
        while (at < html_.size() && !endsName(at) && html_[at] != '=') {
            ++at;
        }
        while (at < html_.size() && IsAsciiSpace(html_[at])) {
            ++at;
        }
        if (at >= html_.size() || html_[at] != '=') {
            continue;
        }
        ++at;
        while (at < html_.size() && IsAsciiSpace(html_[at])) {
            ++at;
        }
        if (at < html_.size() && (html_[at] == '"' || html_[at] == '\'')) {
            const std::size_t close = html_.find(html_[at], at + 1);
            at = close == std::string_view::npos ? html_.size() : close + 1;
        } else {
            while (at < html_.size() && !IsAsciiSpace(html_[at]) && html_[at] != '>') {
                ++at;
            }
        }
    }
    tag.closesItself = at < html_.size() && html_[at - 1] == '/';
    tag.end = std::min(at + 1, html_.size());
    return tag;
}

bool MarkupGuard::OpenElementIsRefused(const Tag& tag)
{
    if ((tag.traits & kVoid) != 0 || (tag.closesItself && foreignDepth_ > 0)) {
        return false;
    }
    if ((tag.traits & kEndedByNext) != 0 && !open_.empty() &&
        EqualsIgnoringCase(open_.back().name, tag.name)) {
        open_.pop_back();
    }
    if (open_.size() >= depthLimit_) {
        return true;
    }
    open_.push_back({tag.name, tag.traits});
    foreignDepth_ += (tag.traits & kForeignRoot) != 0 ? 1 : 0;
    return false;
}

void MarkupGuard::CloseElement(const Tag& tag)
{
    const unsigned barrier = (tag.traits & kScope) != 0   ? 0
                             : (tag.traits & kBlock) != 0 ? kScope
                                                          : kBlock;
    std::size_t at = open_.size();
    while (at > 0 && !EqualsIgnoringCase(open_[at - 1].name, tag.name)) {
        if ((open_[at - 1].traits & barrier) != 0 && (tag.traits & kFormatting) == 0) {
            return;
        }
        --at;
    }
    if (at == 0) {
        return;
    }
    const auto from = open_.begin() + static_cast<std::ptrdiff_t>(at) - 1;
    const auto to = (tag.traits & kFormatting) != 0 ? from + 1 : open_.end();
    foreignDepth_ -= static_cast<std::size_t>(std::count_if(
        from, to, [](const OpenElement& element) { return (element.traits & kForeignRoot) != 0; }));
    open_.erase(from, to);
}

}  // namespace HtmlEngine::Internal
