#include "MarkupBalance.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>
#include <vector>

namespace {

using Text = std::wstring_view;

constexpr Text kVoidElements[] = {L"br", L"img", L"wbr"};
constexpr Text kInlineElements[] = {L"abbr", L"b",    L"big",   L"cite",   L"code", L"del",
                                    L"dfn",  L"em",   L"font",  L"i",      L"ins",  L"kbd",
                                    L"mark", L"q",    L"s",     L"samp",   L"small", L"span",
                                    L"strike", L"strong", L"sub", L"sup", L"tt",   L"u",
                                    L"var"};

template <std::size_t N>
bool Holds(const Text (&names)[N], Text name)
{
    return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

constexpr bool IsLetter(wchar_t character)
{
    return (character >= L'a' && character <= L'z') || (character >= L'A' && character <= L'Z');
}

// Whether "<" and this begin a tag, a comment or the like, rather than text.
constexpr bool OpensMarkup(wchar_t next)
{
    return IsLetter(next) || next == L'/' || next == L'!' || next == L'?';
}

// A tag from behind its "<" to its ">", which it must have. One with another "<" or with quotes
// that do not pair is none that can be trusted.
struct Tag {
    explicit Tag(Text inner)
    {
        isEnd = !inner.empty() && inner.front() == L'/';
        inner.remove_prefix(isEnd ? 1 : 0);
        for (const wchar_t character : inner) {
            if (!IsLetter(character)) {
                break;
            }
            name.push_back(static_cast<wchar_t>(character | 0x20));
        }
        const Text rest = inner.substr(name.size());
        const auto count = [&](wchar_t quote) {
            return std::count(rest.begin(), rest.end(), quote);
        };
        const bool endsName = rest.empty() || Text(L" \t\r\n/").find(rest.front()) != Text::npos;
        isSound = endsName && rest.find(L'<') == Text::npos && count(L'"') % 2 == 0 &&
                  count(L'\'') % 2 == 0;
    }

    std::wstring name;  // in lower case
    bool isEnd = false;
    bool isSound = false;
};

}  // namespace

bool IsBalancedMarkup(Text text)
{
    std::vector<std::wstring> open;
    for (std::size_t at = text.find(L'<'); at != Text::npos; at = text.find(L'<', at)) {
        if (++at == text.size() || !OpensMarkup(text[at])) {
            continue;  // nothing that stands behind a text in a template makes a tag of it
        }
        const std::size_t end = text.find(L'>', at);
        if (end == Text::npos) {
            return false;
        }
        Tag tag(text.substr(at, end - at));
        at = end + 1;
        if (!tag.isSound) {
            return false;
        }
        if (Holds(kVoidElements, tag.name)) {
            if (tag.isEnd) {
                return false;
            }
        } else if (!Holds(kInlineElements, tag.name)) {
            return false;
        } else if (!tag.isEnd) {
            open.push_back(std::move(tag.name));
        } else if (open.empty() || open.back() != tag.name) {
            return false;
        } else {
            open.pop_back();
        }
    }
    return open.empty();
}
