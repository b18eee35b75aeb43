#include "web/StyleAdapter.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>
#include <vector>

namespace Workbench {

namespace {

using Text = std::string_view;

constexpr Text kBlanks = " \t\r\n\f";
constexpr Text kByteOrderMark = "\xEF\xBB\xBF";
constexpr int kDeepestBlock = 16;  // deeper blocks are passed through

constexpr std::array<Text, 4> kStates = {"current", "disabled", "expanded", "collapsed"};
// Pseudo-elements that may be written with one colon; they end a selector.
constexpr std::array<Text, 4> kOldPseudoElements = {"before", "after", "first-line",
                                                    "first-letter"};

bool IsBlank(char c)
{
    return kBlanks.find(c) != Text::npos;
}

bool IsNameCharacter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '_' || static_cast<unsigned char>(c) >= 0x80;
}

std::string LowerCased(Text text)
{
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return lower;
}

Text Trimmed(Text text)
{
    const std::size_t first = text.find_first_not_of(kBlanks);
    return first == Text::npos ? Text()
                               : text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// --- Scanning. A piece is a comment, a string, an escape, or any other single character. ---

bool IsCommentAt(Text text, std::size_t at)
{
    return text.substr(at, 2) == "/*";
}

std::size_t EndOfPiece(Text text, std::size_t at)
{
    if (IsCommentAt(text, at)) {
        const std::size_t end = text.find("*/", at + 2);
        return end == Text::npos ? text.size() : end + 2;
    }
    const char first = text[at];
    if (first == '\\') {
        return std::min(at + 2, text.size());
    }
    if (first != '"' && first != '\'') {
        return at + 1;
    }
    for (++at; at < text.size() && text[at] != first; ++at) {
        at += text[at] == '\\' ? 1u : 0u;
    }
    return std::min(at + 1, text.size());
}

// The first character out of `stops` that is in no comment, string, bracket or parenthesis; the
// end of the text when there is none.
std::size_t FindOutside(Text text, Text stops, std::size_t at)
{
    std::size_t depth = 0;
    while (at < text.size()) {
        const char c = text[at];
        if (depth == 0 && !IsCommentAt(text, at) && stops.find(c) != Text::npos) {
            return at;
        }
        if (c == '(' || c == '[') {
            ++depth;
        } else if ((c == ')' || c == ']') && depth > 0) {
            --depth;
        }
        at = EndOfPiece(text, at);
    }
    return text.size();
}

// The brace that closes the one in front of `at`; the end of the text when there is none.
std::size_t FindBlockEnd(Text text, std::size_t at)
{
    std::size_t depth = 0;
    while (at < text.size()) {
        if (text[at] == '{') {
            ++depth;
        } else if (text[at] == '}' && depth-- == 0) {
            return at;
        }
        at = EndOfPiece(text, at);
    }
    return text.size();
}

std::size_t SkipBlanksAndComments(Text text, std::size_t at)
{
    while (at < text.size() && (IsBlank(text[at]) || IsCommentAt(text, at))) {
        at = EndOfPiece(text, at);
    }
    return at;
}

std::string WithoutComments(Text text)
{
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = EndOfPiece(text, at);
        result += IsCommentAt(text, at) ? Text(" ") : text.substr(at, end - at);
        at = end;
    }
    return std::string(Trimmed(result));
}

std::string WithSinglePercents(Text text)
{
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        const bool isDoubled = text.substr(at, 2) == "%%";
        const bool isUrl = LowerCased(text.substr(at, 4)) == "url(";
        const std::size_t end =
            isUrl ? std::min(text.find(')', at), text.size()) : EndOfPiece(text, at);
        result += text.substr(at, end - at);
        at = end + (isDoubled ? 1u : 0u);
    }
    return result;
}

// --- Selectors ---

std::string WithStateAttributes(Text selector)
{
    std::string result;
    for (std::size_t at = 0; at < selector.size();) {
        std::size_t end = EndOfPiece(selector, at);
        if (selector[at] == '[') {
            end = std::min(FindOutside(selector, "]", end) + 1, selector.size());
        } else if (selector[at] == ':') {
            const auto nameEnd =
                std::find_if_not(selector.begin() + static_cast<std::ptrdiff_t>(end),
                                 selector.end(), IsNameCharacter);
            const auto stop = static_cast<std::size_t>(nameEnd - selector.begin());
            const std::string name = LowerCased(selector.substr(end, stop - end));
            const bool isFunction = stop < selector.size() && selector[stop] == '(';
            if (!isFunction && std::find(kStates.begin(), kStates.end(), name) != kStates.end()) {
                result += "[wb-" + name + "]";
                at = stop;
                continue;
            }
            // The second colon of a pseudo-element begins no state.
            end = stop > end ? stop : std::min(at + 2, selector.size());
        }
        result += selector.substr(at, end - at);
        at = end;
    }
    return result;
}

std::vector<std::string> SelectorsOf(Text list)
{
    std::vector<std::string> selectors;
    for (std::size_t at = 0; at <= list.size();) {
        const std::size_t end = FindOutside(list, ",", at);
        selectors.push_back(WithoutComments(list.substr(at, end - at)));
        at = end + 1;
    }
    return selectors;
}

// Where something more may be asked of what a selector selects: in front of its pseudo-element.
std::size_t EndOfSubject(Text selector)
{
    for (std::size_t at = 0; (at = FindOutside(selector, ":", at)) < selector.size(); ++at) {
        const Text rest = selector.substr(at + 1);
        if (rest.starts_with(':') ||
            std::any_of(kOldPseudoElements.begin(), kOldPseudoElements.end(), [&](Text name) {
                return LowerCased(rest.substr(0, name.size())) == name &&
                       (rest.size() == name.size() || !IsNameCharacter(rest[name.size()]));
            })) {
            return at;
        }
    }
    return selector.size();
}

// Transforms each selector of a list and joins the results.
template <class Form>
std::string EachSelector(Text list, Form form)
{
    std::string result;
    for (const std::string& selector : SelectorsOf(list)) {
        result += (result.empty() ? "" : ", ") + form(selector);
    }
    return result;
}

// --- Declarations ---

struct Declaration {
    std::string name;   // in lower case
    std::string value;  // likewise, without comments
    bool important = false;
};

std::optional<Declaration> ParseDeclaration(Text text)
{
    const std::size_t colon = FindOutside(text, ":", 0);
    if (colon == text.size()) {
        return std::nullopt;
    }
    Declaration declaration{LowerCased(WithoutComments(text.substr(0, colon))),
                            LowerCased(WithoutComments(text.substr(colon + 1)))};
    const std::size_t mark = declaration.value.rfind('!');
    if (mark != std::string::npos &&
        Trimmed(Text(declaration.value).substr(mark + 1)) == "important") {
        declaration.important = true;
        declaration.value = Trimmed(Text(declaration.value).substr(0, mark));
    }
    return declaration;
}

// Translation of a style rule: its new declarations, and the rules to add after it.
class RuleAdapter {
public:
    explicit RuleAdapter(std::string selectors) : selectors_(std::move(selectors)) {}

    // Adds one declaration without its semicolon, with the blanks and comments in front of it.
    void Take(Text text, bool closed)
    {
        const std::size_t begin = SkipBlanksAndComments(text, 0);
        const Text content = text.substr(begin);
        const std::optional<Declaration> declaration = ParseDeclaration(content);
        std::string adapted =
            declaration ? Adapted(*declaration, content) : WithSinglePercents(content);
        if (adapted.empty() && !content.empty()) {
            return;
        }
        body_ += text.substr(0, begin);
        body_ += adapted;
        body_ += closed ? ";" : "";
        hasContent_ = hasContent_ || !content.empty();
    }

    std::string Finish(Text prelude, bool wasEmpty) const
    {
        std::string rule;
        if (hasContent_ || wasEmpty) {
            rule = WithStateAttributes(prelude) + "{" + body_ + "}";
        }
        return rule + added_;
    }

    bool Collapses() const noexcept { return collapses_; }

private:
    // The replacement of a declaration; empty: none.
    std::string Adapted(const Declaration& declaration, Text text)
    {
        const std::string priority = declaration.important ? " !important" : "";
        if (declaration.name == "flow" && declaration.value == "vertical") {
            return Flow("column", "height", priority);
        }
        if (declaration.name == "flow" && declaration.value == "horizontal") {
            return Flow("row", "width", priority);
        }
        if (declaration.name == "behavior") {
            return declaration.value == "clickable" ? "cursor: pointer" + priority : "";
        }
        if (declaration.name == "visibility" && declaration.value == "collapse") {
            Collapse(priority);
            return {};
        }
        if (declaration.name == "background" || declaration.name == "background-image") {
            Sharpen(text, priority);
        }
        std::string adapted = WithSinglePercents(text);
        const std::string value = WithSinglePercents(declaration.value);
        if ((declaration.name == "width" || declaration.name == "height") && value == "100%") {
            adapted += "; --wb-full-" + declaration.name + ": 1";
        }
        return adapted;
    }

    // Children keep their size along the flow; a child with a size of 100% takes the remaining
    // space. A property in the child's own rule, which has precedence, selects that.
    std::string Flow(const std::string& direction, const std::string& side,
                     const std::string& priority)
    {
        added_ += "\n:where(" + selectors_ +
                  ") > * { --wb-full-width: 0; --wb-full-height: 0; min-width: 0; min-height: 0; "
                  "flex-shrink: var(--wb-full-" +
                  side + "); }";
        return "display: flex" + priority + "; flex-direction: " + direction + priority;
    }

    // An image beside the sheet is drawn from its vector source where a pixel of the sheet is not a
    // pixel of the screen.
    void Sharpen(Text text, const std::string& priority)
    {
        constexpr Text kBegin = "url(";
        constexpr Text kEnd = ".png)";
        const std::size_t begin = text.find(kBegin);
        const std::size_t end = text.find(kEnd);
        if (begin >= end || end == Text::npos) {
            return;
        }
        const Text name = text.substr(begin + kBegin.size(), end - begin - kBegin.size());
        if (std::all_of(name.begin(), name.end(), IsNameCharacter)) {
            added_ += "\n@media not all and (resolution: 1dppx) { " + selectors_ +
                      " { background-image: url(artwork/" + std::string(name) + ".svg)" + priority +
                      "; } }";
        }
    }

    void Collapse(const std::string& priority)
    {
        collapses_ = true;
        added_ += "\n" +
                  EachSelector(selectors_,
                               [](std::string selector) {
                                   return selector.insert(EndOfSubject(selector),
                                                          ":not([wb-visibility=\"visible\"])");
                               }) +
                  " { display: none" + priority + "; }";
    }

    const std::string selectors_;
    std::string body_;
    std::string added_;
    bool hasContent_ = false;
    bool collapses_ = false;
};

// --- Rules ---

class SheetAdapter {
public:
    std::string Adapt(Text sheet)
    {
        std::string result;
        if (sheet.starts_with(kByteOrderMark)) {
            sheet.remove_prefix(kByteOrderMark.size());
        }
        result = Rules(sheet, {}, 0);
        if (collapses_) {
            result += "\n[wb-visibility=\"collapse\"] { display: none !important; }\n";
        }
        return result;
    }

private:
    // The rules of a sheet or a block. `scope`: selector to nest them under; empty: none.
    std::string Rules(Text text, const std::string& scope, int depth)
    {
        std::string result;
        std::size_t at = 0;
        while (at < text.size()) {
            const std::size_t begin = SkipBlanksAndComments(text, at);
            result += text.substr(at, begin - at);
            const std::size_t open = FindOutside(text, "{;}", begin);
            const std::size_t end =
                open < text.size() && text[open] == '{' ? FindBlockEnd(text, open + 1) : open;
            if (end == text.size()) {
                result += text.substr(begin);
                break;
            }
            const Text prelude = text.substr(begin, open - begin);
            if (end == open) {
                result += text.substr(begin, end + 1 - begin);
            } else if (prelude.starts_with('@')) {
                result += AtRule(prelude, text.substr(open + 1, end - open - 1), scope, depth);
            } else {
                result += StyleRule(prelude, text.substr(open + 1, end - open - 1), scope);
            }
            at = end + 1;
        }
        return result;
    }

    std::string AtRule(Text prelude, Text block, const std::string& scope, int depth)
    {
        if (const auto language = LanguageScope(prelude); language && depth < kDeepestBlock) {
            return std::string(Trimmed(Rules(block, *language + scope, depth + 1)));
        }
        const std::string name = LowerCased(prelude.substr(0, prelude.find_first_of(" \t\r\n\f(")));
        const bool hasRules = name == "@media" || name == "@supports";
        std::string result(prelude);
        result += '{';
        result += hasRules && depth < kDeepestBlock ? Rules(block, scope, depth + 1)
                                                    : WithSinglePercents(block);
        result += '}';
        return result;
    }

    // `@media locale == "ru"` and its negation as a condition on the root element.
    static std::optional<std::string> LanguageScope(Text prelude)
    {
        const std::string plain = WithoutComments(prelude);
        Text rest = plain;
        const auto take = [&](Text word) {
            const bool found = LowerCased(rest.substr(0, word.size())) == word;
            rest.remove_prefix(found ? word.size() : 0);
            rest.remove_prefix(std::min(rest.find_first_not_of(kBlanks), rest.size()));
            return found;
        };
        if (!take("@media") || !take("locale")) {
            return std::nullopt;
        }
        const bool isEqual = take("==");
        if (!isEqual && !take("!=")) {
            return std::nullopt;
        }
        const bool isQuoted = rest.size() > 2 && (rest.front() == '"' || rest.front() == '\'') &&
                              rest.back() == rest.front();
        const Text name = isQuoted ? rest.substr(1, rest.size() - 2) : Text();
        if (name.empty() || !std::all_of(name.begin(), name.end(), IsNameCharacter)) {
            return std::nullopt;
        }
        const std::string attribute = "[wb-locale=\"" + std::string(name) + "\"]";
        return isEqual ? attribute : ":not(" + attribute + ")";
    }

    // In a selector that begins with the root, the condition applies to that root.
    static std::string Scoped(const std::string& selector, const std::string& scope)
    {
        for (const Text root : {Text(":root"), Text("html")}) {
            if (LowerCased(Text(selector).substr(0, root.size())) == root &&
                (selector.size() == root.size() || !IsNameCharacter(selector[root.size()]))) {
                return std::string(root) + scope + selector.substr(root.size());
            }
        }
        return ":root" + scope + " " + selector;
    }

    std::string StyleRule(Text prelude, Text block, const std::string& scope)
    {
        std::string scoped(prelude);
        if (!scope.empty()) {
            scoped =
                EachSelector(prelude,
                             [&](const std::string& selector) { return Scoped(selector, scope); }) +
                " ";
        }
        RuleAdapter rule(WithoutComments(WithStateAttributes(scoped)));
        for (std::size_t at = 0; at < block.size();) {
            const std::size_t begin = SkipBlanksAndComments(block, at);
            std::size_t end = FindOutside(block, ";{", begin);
            if (end < block.size() && block[end] == '{') {
                // A nested rule is passed to the browser.
                end = std::min(FindBlockEnd(block, end + 1) + 1, block.size());
                rule.Take(block.substr(at, end - at), false);
                at = end;
                continue;
            }
            rule.Take(block.substr(at, end - at), end < block.size());
            at = end + 1;
        }
        collapses_ = collapses_ || rule.Collapses();
        return rule.Finish(scoped, Trimmed(block).empty());
    }

    bool collapses_ = false;
};

}  // namespace

std::string AdaptStyleSheet(std::string_view sheet)
{
    return SheetAdapter().Adapt(sheet);
}

}  // namespace Workbench
