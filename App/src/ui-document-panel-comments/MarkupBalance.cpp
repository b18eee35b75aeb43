#include "MarkupBalance.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>
#include <vector>

namespace {

using Text = std::wstring_view;

constexpr Text kVoidElements[] = {L"br", L"img", L"wbr"};
constexpr Text kInlineElements[] = {
    L"abbr",   L"b",      L"big", L"cite", L"code", L"del", L"dfn",  L"em",    L"font",
    L"i",      L"ins",    L"kbd", L"mark", L"q",    L"s",   L"samp", L"small", L"span",
    L"strike", L"strong", L"sub", L"sup",  L"tt",   L"u",   L"var"};

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

constexpr Text kBlanks = L" \t\r\n\f";

// Whether this, which stands behind a tag's name, is nothing but attributes that end where they
// seem to: values between quotes hold neither "<" nor ">", nor does anything else.
bool AreSoundAttributes(Text rest)
{
    if (!rest.empty() && rest.front() != L'/' && kBlanks.find(rest.front()) == Text::npos) {
        return false;  // part of the name
    }
    while (!rest.empty()) {
        const std::size_t quote = rest.find_first_of(L"\"'<>");
        if (quote == Text::npos) {
            return true;
        }
        // Only directly behind the equals sign does a quote open a value.
        const std::size_t end = rest.find(rest[quote], quote + 1);
        if (quote == 0 || rest[quote - 1] != L'=' || end == Text::npos ||
            rest.substr(quote, end - quote).find_first_of(L"<>") != Text::npos) {
            return false;
        }
        rest.remove_prefix(end + 1);
    }
    return true;
}

// A tag from behind its "<" to the first ">".
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
        isSound = AreSoundAttributes(inner.substr(name.size()));
    }

    std::wstring name;  // in lower case
    bool isEnd = false;
    bool isSound = false;  // its ">" is the one that ends it
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
