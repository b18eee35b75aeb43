#include "html-engine/Types.h"
#include "html-engine/internal/Ascii.h"
#include "html-engine/internal/Selector.h"
#include "html-engine/internal/Utf8.h"

#include <array>
#include <charconv>
#include <cstddef>

namespace HtmlEngine::Internal {

namespace {

// Matching recurses once per compound.
constexpr std::size_t kMostCompounds = 64;

struct PseudoClass {
    std::string_view name;
    ConditionKind kind;
    std::uint32_t number;
};

constexpr std::array kPseudoClasses = {
    PseudoClass{"first-child", ConditionKind::FirstChild, 0},
    PseudoClass{"last-child", ConditionKind::LastChild, 0},
    PseudoClass{"only-child", ConditionKind::OnlyChild, 0},
    PseudoClass{"empty", ConditionKind::Empty, 0},
    PseudoClass{"root", ConditionKind::Root, 0},
    PseudoClass{"enabled", ConditionKind::Enabled, 0},
    PseudoClass{"current", ConditionKind::State, ElementState::kCurrent},
    PseudoClass{"disabled", ConditionKind::State, ElementState::kDisabled},
    PseudoClass{"expanded", ConditionKind::State, ElementState::kExpanded},
    PseudoClass{"collapsed", ConditionKind::State, ElementState::kCollapsed},
    PseudoClass{"hover", ConditionKind::State, ElementState::kHover},
    PseudoClass{"active", ConditionKind::State, ElementState::kActive},
    PseudoClass{"focus", ConditionKind::State, ElementState::kFocus},
    PseudoClass{"nth-child", ConditionKind::NthChild, 0},
    PseudoClass{"not", ConditionKind::Not, 0},
};

bool IsNameCharacter(char c)
{
    return IsAsciiLetter(c) || IsAsciiDigit(c) || c == '-' || c == '_' || !IsAscii(c);
}

int HexValue(char c)
{
    if (IsAsciiDigit(c)) {
        return c - '0';
    }
    const char lower = ToAsciiLower(c);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

}  // namespace

bool SelectorParser::Fail(std::string_view reason)
{
    if (problem_.empty()) {
        problem_ = std::string(reason) + " at character " + std::to_string(at_ + 1);
    }
    return false;
}

bool SelectorParser::Accept(char c)
{
    if (AtEnd() || text_[at_] != c) {
        return false;
    }
    ++at_;
    return true;
}

bool SelectorParser::SkipSpace()
{
    const std::size_t from = at_;
    while (!AtEnd() && IsAsciiSpace(text_[at_])) {
        ++at_;
    }
    return at_ > from;
}

bool SelectorParser::Parse(Selector& selector)
{
    selector.alternatives.clear();
    do {
        SkipSpace();
        if (!ParseComplex(selector.alternatives.emplace_back())) {
            selector.alternatives.clear();
            return false;
        }
    } while (Accept(','));
    return AtEnd() ? true : Fail("unexpected character");
}

bool SelectorParser::ParseComplex(ComplexSelector& complex)
{
    Combinator combinator = Combinator::Descendant;
    bool more = true;
    while (more) {
        if (complex.size() == kMostCompounds) {
            return Fail("too many compound selectors");
        }
        Compound& compound = complex.emplace_back();
        compound.combinator = combinator;
        if (!ParseCompound(compound.conditions, false) || !ParseCombinator(combinator, more)) {
            return false;
        }
    }
    return true;
}

bool SelectorParser::ParseCombinator(Combinator& combinator, bool& found)
{
    const bool space = SkipSpace();
    combinator = Combinator::Descendant;
    found = true;
    if (Accept('>')) {
        combinator = Combinator::Child;
    } else if (Accept('+')) {
        combinator = Combinator::NextSibling;
    } else if (Accept('~')) {
        combinator = Combinator::LaterSibling;
    } else {
        found = space && !AtEnd() && Peek() != ',';
        return true;
    }
    SkipSpace();
    return true;
}

bool SelectorParser::ParseCompound(std::vector<Condition>& conditions, bool insideNot)
{
    const std::size_t from = at_;
    std::string name;
    if (!Accept('*') && (IsNameCharacter(Peek()) || Peek() == '\\') && !AtEnd()) {
        if (!ParseIdentifier(name, false)) {
            return false;
        }
        conditions.push_back({ConditionKind::TagName, atoms_.Find(AsciiLower(name))});
    }
    while (true) {
        if (Accept('.')) {
            if (!ParseIdentifier(name, false)) {
                return false;
            }
            conditions.push_back({ConditionKind::Class, atoms_.Find(name)});
        } else if (Accept('#')) {
            // An id may be a number or begin with one, as generated ids do.
            if (!ParseIdentifier(name, true)) {
                return false;
            }
            conditions.push_back({ConditionKind::Id, atoms_.Find(name)});
        } else if (Accept('[')) {
            if (!ParseAttribute(conditions)) {
                return false;
            }
        } else if (Accept(':')) {
            if (!ParsePseudoClass(conditions, insideNot)) {
                return false;
            }
        } else {
            break;
        }
    }
    return at_ > from ? true : Fail(AtEnd() ? "selector expected" : "unexpected character");
}

bool SelectorParser::ParseAttribute(std::vector<Condition>& conditions)
{
    std::string name;
    SkipSpace();
    if (!ParseIdentifier(name, false)) {
        return false;
    }
    Condition condition{ConditionKind::Attribute, atoms_.Find(AsciiLower(name))};
    SkipSpace();
    if (Accept('=')) {
        SkipSpace();
        if (!ParseAttributeValue(condition.text)) {
            return false;
        }
        condition.kind = ConditionKind::AttributeValue;
        condition.second = atoms_.Find(condition.text);
        SkipSpace();
    }
    if (!Accept(']')) {
        return Fail("']' expected");
    }
    conditions.push_back(std::move(condition));
    return true;
}

bool SelectorParser::ParseAttributeValue(std::string& value)
{
    const char quote = Peek();
    if (quote != '"' && quote != '\'') {
        // Numbers stand without quotes too.
        return ParseIdentifier(value, true);
    }
    ++at_;
    while (!AtEnd() && Peek() != quote) {
        if (Accept('\\')) {
            if (!ParseEscape(value)) {
                return false;
            }
        } else {
            value += text_[at_++];
        }
    }
    return Accept(quote) ? true : Fail("unclosed string");
}

bool SelectorParser::ParsePseudoClass(std::vector<Condition>& conditions, bool insideNot)
{
    std::string name;
    if (!ParseIdentifier(name, false)) {
        return false;
    }
    for (const PseudoClass& pseudoClass : kPseudoClasses) {
        if (EqualsIgnoringCase(name, pseudoClass.name)) {
            Condition& condition = conditions.emplace_back();
            condition.kind = pseudoClass.kind;
            condition.number = pseudoClass.number;
            return ParseArgument(condition, insideNot);
        }
    }
    return Fail("unknown pseudo-class");
}

bool SelectorParser::ParseArgument(Condition& condition, bool insideNot)
{
    if (condition.kind != ConditionKind::NthChild && condition.kind != ConditionKind::Not) {
        return Peek() == '(' ? Fail("no argument expected") : true;
    }
    if (!Accept('(')) {
        return Fail("'(' expected");
    }
    SkipSpace();
    if (condition.kind == ConditionKind::Not) {
        if (insideNot) {
            return Fail(":not inside :not");
        }
        if (!ParseCompound(condition.negated, true)) {
            return false;
        }
    } else {
        const char* const end = text_.data() + text_.size();
        const auto [stop, error] = std::from_chars(text_.data() + at_, end, condition.number);
        if (error != std::errc()) {
            return Fail("number expected");
        }
        at_ = static_cast<std::size_t>(stop - text_.data());
    }
    SkipSpace();
    return Accept(')') ? true : Fail("')' expected");
}

bool SelectorParser::ParseIdentifier(std::string& identifier, bool mayBeginWithDigit)
{
    identifier.clear();
    if (!mayBeginWithDigit && IsAsciiDigit(Peek())) {
        return Fail("name expected");
    }
    while (!AtEnd()) {
        if (IsNameCharacter(Peek())) {
            identifier += text_[at_++];
        } else if (Accept('\\')) {
            if (!ParseEscape(identifier)) {
                return false;
            }
        } else {
            break;
        }
    }
    return identifier.empty() ? Fail("name expected") : true;
}

bool SelectorParser::ParseEscape(std::string& out)
{
    if (AtEnd() || Peek() == '\n') {
        return Fail("character expected after '\\'");
    }
    if (HexValue(Peek()) < 0) {
        out += text_[at_++];
        return true;
    }
    std::uint32_t code = 0;
    for (int digits = 0; digits < 6 && HexValue(Peek()) >= 0; ++digits) {
        code = code * 16 + static_cast<std::uint32_t>(HexValue(text_[at_++]));
    }
    if (!AtEnd() && IsAsciiSpace(Peek())) {
        ++at_;
    }
    AppendUtf8(code, out);
    return true;
}

}  // namespace HtmlEngine::Internal
