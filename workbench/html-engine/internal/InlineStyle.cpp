#include "html-engine/internal/InlineStyle.h"

#include "html-engine/internal/Ascii.h"

#include <algorithm>
#include <cstddef>

namespace HtmlEngine::Internal {

namespace {

// Length of the declaration that `text` begins with: up to a semicolon outside quotes and
// brackets.
std::size_t DeclarationLength(std::string_view text)
{
    char quote = 0;
    int depth = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char c = text[at];
        if (c == '\\') {
            ++at;
        } else if (quote != 0) {
            quote = c == quote ? '\0' : quote;
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == '(' || c == '[' || c == '{') {
            ++depth;
        } else if (c == ')' || c == ']' || c == '}') {
            depth = std::max(depth - 1, 0);
        } else if (c == ';' && depth == 0) {
            return at;
        }
    }
    return text.size();
}

bool IsPropertyName(std::string_view name)
{
    return !name.empty() && !IsAsciiDigit(name.front()) &&
           std::all_of(name.begin(), name.end(), [](char c) {
               return IsAsciiLetter(c) || IsAsciiDigit(c) || c == '-' || c == '_' || !IsAscii(c);
           });
}

// The keyword of a value: what stands before "!important", without white space.
std::string_view KeywordOf(std::string_view value)
{
    return TrimAscii(value.substr(0, value.find('!')));
}

}  // namespace

InlineStyle::InlineStyle(std::string_view text)
{
    while (!text.empty()) {
        const std::size_t length = DeclarationLength(text);
        const std::string_view declaration = text.substr(0, length);
        text.remove_prefix(std::min(length + 1, text.size()));
        const std::size_t colon = declaration.find(':');
        if (colon == std::string_view::npos) {
            continue;
        }
        const std::string_view property = TrimAscii(declaration.substr(0, colon));
        const std::string_view value = TrimAscii(declaration.substr(colon + 1));
        if (IsPropertyName(property) && !value.empty()) {
            Store(property, value);
        }
    }
}

const InlineStyle::Declaration* InlineStyle::Find(std::string_view property) const
{
    const auto found = std::find_if(declarations_.begin(), declarations_.end(),
                                    [&](const Declaration& declaration) {
                                        return EqualsIgnoringCase(declaration.property, property);
                                    });
    return found == declarations_.end() ? nullptr : &*found;
}

void InlineStyle::Store(std::string_view property, std::string_view value)
{
    if (const Declaration* const declaration = Find(property)) {
        declarations_[static_cast<std::size_t>(declaration - declarations_.data())].value = value;
    } else {
        declarations_.push_back({AsciiLower(property), std::string(value)});
    }
}

std::string_view InlineStyle::Get(std::string_view property) const
{
    const Declaration* const declaration = Find(property);
    return declaration == nullptr ? std::string_view() : std::string_view(declaration->value);
}

bool InlineStyle::Set(std::string_view property, std::string_view value)
{
    property = TrimAscii(property);
    value = TrimAscii(value);
    if (!IsPropertyName(property)) {
        return false;
    }
    if (value.empty()) {
        std::erase_if(declarations_, [&](const Declaration& declaration) {
            return EqualsIgnoringCase(declaration.property, property);
        });
        return true;
    }
    // A value that opens a quote or bracket without closing it would swallow what follows it.
    const std::string probe = std::string(value) + ";";
    if (DeclarationLength(probe) != value.size()) {
        return false;
    }
    Store(property, value);
    return true;
}

std::string InlineStyle::ToText() const
{
    std::string text;
    for (const Declaration& declaration : declarations_) {
        text += text.empty() ? "" : " ";
        text += declaration.property + ": " + declaration.value + ";";
    }
    return text;
}

bool InlineStyle::Hides() const
{
    const std::string_view visibility = KeywordOf(Get("visibility"));
    return EqualsIgnoringCase(visibility, "collapse") || EqualsIgnoringCase(visibility, "hidden") ||
           EqualsIgnoringCase(KeywordOf(Get("display")), "none");
}

}  // namespace HtmlEngine::Internal
