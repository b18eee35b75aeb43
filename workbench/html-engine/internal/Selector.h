// A selector as data, and the parser that makes it. Names are resolved to the atoms of one document
// while parsing: a name that the document does not hold is kNoAtom and matches nothing. A Selector
// is therefore made for one query and not kept.
#pragma once

#include "html-engine/internal/AtomTable.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace HtmlEngine::Internal {

enum class ConditionKind : std::uint8_t {
    TagName,         ///< first: the name
    Class,           ///< first: the class
    Id,              ///< first: the id
    Attribute,       ///< first: the name
    AttributeValue,  ///< first: the name, second: the value, text: the value as written
    State,           ///< number: the bit
    Enabled,
    FirstChild,
    LastChild,
    OnlyChild,
    NthChild,  ///< number: the 1-based position
    Empty,
    Root,
    Not,  ///< negated: what must not hold together
};

struct Condition {
    ConditionKind kind = ConditionKind::TagName;
    Atom first = kNoAtom;
    Atom second = kNoAtom;
    std::uint32_t number = 0;
    std::string text = {};
    std::vector<Condition> negated = {};
};

enum class Combinator : std::uint8_t { Descendant, Child, NextSibling, LaterSibling };

// The conditions on one element; none for the universal selector.
struct Compound {
    std::vector<Condition> conditions;
    // How this compound's element stands to that of the compound before.
    Combinator combinator = Combinator::Descendant;
};

// Compounds from left to right; never empty.
using ComplexSelector = std::vector<Compound>;

struct Selector {
    // The parts between commas; never empty.
    std::vector<ComplexSelector> alternatives;
};

class SelectorParser {
public:
    SelectorParser(std::string_view text, const AtomTable& atoms) : text_(text), atoms_(atoms) {}

    // False when the text is malformed; Problem() then says how.
    bool Parse(Selector& selector);

    // "reason at character N", N from 1.
    const std::string& Problem() const { return problem_; }

private:
    bool Fail(std::string_view reason);
    bool AtEnd() const { return at_ >= text_.size(); }
    char Peek() const { return AtEnd() ? '\0' : text_[at_]; }
    bool Accept(char c);
    bool SkipSpace();

    bool ParseComplex(ComplexSelector& complex);
    bool ParseCombinator(Combinator& combinator, bool& found);
    bool ParseCompound(std::vector<Condition>& conditions, bool insideNot);
    bool ParseAttribute(std::vector<Condition>& conditions);
    bool ParsePseudoClass(std::vector<Condition>& conditions, bool insideNot);
    bool ParseArgument(Condition& condition, bool insideNot);
    bool ParseIdentifier(std::string& identifier, bool mayBeginWithDigit);
    bool ParseEscape(std::string& out);
    bool ParseAttributeValue(std::string& value);

    std::string_view text_;
    const AtomTable& atoms_;
    std::size_t at_ = 0;
    std::string problem_;
};

}  // namespace HtmlEngine::Internal
