#include "RandomSelector.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <string_view>

namespace HtmlEngine::Test {

namespace {

constexpr std::array<std::string_view, 5> kTags = {"div", "ul", "li", "span", "popup"};
constexpr std::array<std::string_view, 4> kClasses = {"a", "b", "c", "rare"};
constexpr std::array<std::string_view, 3> kAttributes = {"x", "annot-name", "page-item"};
constexpr std::array<std::string_view, 4> kValues = {"0", "1", "0_1", ""};

struct State {
    std::string_view name;
    std::uint32_t bit;
};

constexpr std::array<State, 3> kStates = {State{"current", ElementState::kCurrent},
                                          State{"expanded", ElementState::kExpanded},
                                          State{"disabled", ElementState::kDisabled}};

// The parts in one string.
std::string Joined(std::initializer_list<std::string_view> parts)
{
    std::string text;
    for (const std::string_view part : parts) {
        text += part;
    }
    return text;
}

template <typename Items>
auto AnyOf(Random& random, const Items& items)
{
    return items[Pick(random, items.size())];
}

bool HasClass(const Document& document, ElementHandle element, std::string_view name)
{
    const std::string classes =
        Joined({" ", document.Attribute(element, "class").value_or(""), " "});
    return classes.find(Joined({" ", name, " "})) != std::string::npos;
}

std::size_t CountBefore(const Document& document, ElementHandle element)
{
    std::size_t count = 0;
    for (ElementHandle e = document.PreviousSibling(element); e != kNoElement;
         e = document.PreviousSibling(e)) {
        ++count;
    }
    return count;
}

}  // namespace

RandomSelector::Test RandomSelector::MakeTest(Random& random)
{
    Test test;
    switch (Pick(random, 10)) {
    case 0:
        test.name = AnyOf(random, kClasses);
        test.text = Joined({".", test.name});
        test.holds = [](const Document& d, ElementHandle e, const Test& t, ElementHandle) {
            return HasClass(d, e, t.name);
        };
        break;
    case 1:
    case 2:
        test.name = AnyOf(random, kAttributes);
        test.text = Joined({"[", test.name, "]"});
        test.holds = [](const Document& d, ElementHandle e, const Test& t, ElementHandle) {
            return d.Attribute(e, t.name).has_value();
        };
        break;
    case 3:
        test.name = AnyOf(random, kAttributes);
        test.value = AnyOf(random, kValues);
        test.text = Joined({"[", test.name, "=\"", test.value, "\"]"});
        test.holds = [](const Document& d, ElementHandle e, const Test& t, ElementHandle) {
            return d.Attribute(e, t.name) == t.value;
        };
        break;
    case 4: {
        const State state = AnyOf(random, kStates);
        test.text = Joined({":", state.name});
        test.number = state.bit;
        test.holds = [](const Document& d, ElementHandle e, const Test& t, ElementHandle) {
            return (d.State(e) & t.number) != 0;
        };
        break;
    }
    case 5:
        test.text = ":first-child";
        test.holds = [](const Document& d, ElementHandle e, const Test&, ElementHandle) {
            return d.PreviousSibling(e) == kNoElement;
        };
        break;
    case 6:
        test.text = ":last-child";
        test.holds = [](const Document& d, ElementHandle e, const Test&, ElementHandle) {
            return d.NextSibling(e) == kNoElement;
        };
        break;
    case 7:
        test.number = static_cast<std::uint32_t>(Pick(random, 4));
        test.text = Joined({":nth-child(", std::to_string(test.number), ")"});
        test.holds = [](const Document& d, ElementHandle e, const Test& t, ElementHandle) {
            return CountBefore(d, e) + 1 == t.number;
        };
        break;
    case 8:
        test.text = ":only-child";
        test.holds = [](const Document& d, ElementHandle e, const Test&, ElementHandle) {
            return d.PreviousSibling(e) == kNoElement && d.NextSibling(e) == kNoElement;
        };
        break;
    default:
        test.text = ":root";
        test.holds = [](const Document&, ElementHandle e, const Test&, ElementHandle root) {
            return e == root;
        };
        break;
    }
    test.negated = Pick(random, 6) == 0;
    return test;
}

RandomSelector::RandomSelector(Random& random)
{
    chains_.resize(Pick(random, 5) == 0 ? 2 : 1);
    for (Chain& chain : chains_) {
        chain.resize(1 + Pick(random, 4));
        for (Part& part : chain) {
            constexpr std::string_view kCombinators = "     >>>+~";
            part.combinator = kCombinators[Pick(random, kCombinators.size())];
            if (Pick(random, 3) != 0) {
                Test tag;
                tag.name = AnyOf(random, kTags);
                tag.text = tag.name;
                tag.holds = [](const Document& d, ElementHandle e, const Test& t, ElementHandle) {
                    return d.TagName(e) == t.name;
                };
                part.tests.push_back(tag);
            }
            for (std::size_t count = Pick(random, 3); count > 0; --count) {
                part.tests.push_back(MakeTest(random));
            }
        }
    }
}

std::string RandomSelector::Text() const
{
    std::string text;
    for (const Chain& chain : chains_) {
        text += text.empty() ? "" : ", ";
        for (std::size_t index = 0; index < chain.size(); ++index) {
            if (index > 0) {
                text += ' ';
                text += chain[index].combinator;
                text += ' ';
            }
            text += chain[index].tests.empty() ? "*" : "";
            for (const Test& test : chain[index].tests) {
                text += test.negated ? Joined({":not(", test.text, ")"}) : test.text;
            }
        }
    }
    return text;
}

bool RandomSelector::Matches(const Document& document, ElementHandle element,
                             ElementHandle root) const
{
    return std::any_of(chains_.begin(), chains_.end(), [&](const Chain& chain) {
        return MatchesChain(document, element, root, chain, chain.size() - 1);
    });
}

bool RandomSelector::MatchesChain(const Document& document, ElementHandle element,
                                  ElementHandle root, const Chain& chain, std::size_t last)
{
    if (element == kNoElement) {
        return false;
    }
    for (const Test& test : chain[last].tests) {
        if (test.holds(document, element, test, root) == test.negated) {
            return false;
        }
    }
    if (last == 0) {
        return true;
    }
    const char combinator = chain[last].combinator;
    const bool upwards = combinator == ' ' || combinator == '>';
    const auto step = [&](ElementHandle e) {
        return upwards ? document.Parent(e) : document.PreviousSibling(e);
    };
    for (ElementHandle other = step(element); other != kNoElement; other = step(other)) {
        if (MatchesChain(document, other, root, chain, last - 1)) {
            return true;
        }
        if (combinator == '>' || combinator == '+') {
            return false;
        }
    }
    return false;
}

std::string RandomMarkup(Random& random, int depth)
{
    std::string html;
    for (std::size_t count = Pick(random, depth > 3 ? 5 : 3) + (depth > 3 ? 1 : 0); count > 0;
         --count) {
        const std::string tag(AnyOf(random, kTags));
        html += Joined({"<", tag});
        if (Pick(random, 3) == 0) {
            html += Joined(
                {" .", kClasses[Pick(random, kClasses.size() - (Pick(random, 4) == 0 ? 0 : 1))]});
        }
        if (Pick(random, 3) == 0) {
            html +=
                Joined({" class='", AnyOf(random, kClasses), " ", AnyOf(random, kClasses), "'"});
        }
        if (Pick(random, 2) == 0) {
            html += Joined({" ", AnyOf(random, kAttributes), "=\"", AnyOf(random, kValues), "\""});
        }
        html += Pick(random, 8) == 0 ? " disabled>" : ">";
        html += Pick(random, 3) == 0 ? "text" : "";
        html += depth > 0 ? RandomMarkup(random, depth - 1) : "";
        html += Joined({"</", tag, ">", Pick(random, 3) == 0 ? "\r\n" : ""});
    }
    return html;
}

}  // namespace HtmlEngine::Test
