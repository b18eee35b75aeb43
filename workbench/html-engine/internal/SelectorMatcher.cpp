#include "html-engine/internal/SelectorMatcher.h"

#include "html-engine/Types.h"
#include "html-engine/internal/TreeWalk.h"

#include <algorithm>

namespace HtmlEngine::Internal {

bool SelectorMatcher::Matches(NodeId element, const Selector& selector) const
{
    return std::any_of(selector.alternatives.begin(), selector.alternatives.end(),
                       [&](const ComplexSelector& complex) {
                           return MatchesUpTo(element, complex, complex.size() - 1);
                       });
}

SelectorMatcher::Outcome SelectorMatcher::Match(NodeId element, const ComplexSelector& complex,
                                                std::size_t last) const
{
    const Compound& compound = complex[last];
    if (!MatchesAll(element, compound.conditions)) {
        return Outcome::FailsHere;
    }
    if (last == 0) {
        return Outcome::Match;
    }
    NodeId other = kNoNode;
    switch (compound.combinator) {
    case Combinator::Descendant:
        for (other = nodes_[element].parent; other != kNoNode; other = nodes_[other].parent) {
            const Outcome outcome = Match(other, complex, last - 1);
            if (outcome == Outcome::Match || outcome == Outcome::FailsForAncestors) {
                return outcome;
            }
        }
        return Outcome::FailsForAncestors;
    case Combinator::Child:
        other = nodes_[element].parent;
        return other == kNoNode ? Outcome::FailsForAncestors : Match(other, complex, last - 1);
    case Combinator::NextSibling:
        other = PreviousElementSibling(nodes_, element);
        return other == kNoNode ? Outcome::FailsForSiblings : Match(other, complex, last - 1);
    case Combinator::LaterSibling:
        for (other = PreviousElementSibling(nodes_, element); other != kNoNode;
             other = PreviousElementSibling(nodes_, other)) {
            const Outcome outcome = Match(other, complex, last - 1);
            if (outcome != Outcome::FailsHere) {
                return outcome;
            }
        }
        return Outcome::FailsForSiblings;
    }
    return Outcome::FailsHere;
}

bool SelectorMatcher::MatchesAll(NodeId element, const std::vector<Condition>& conditions) const
{
    return std::all_of(conditions.begin(), conditions.end(), [&](const Condition& condition) {
        return MatchesCondition(element, condition);
    });
}

bool SelectorMatcher::MatchesCondition(NodeId element, const Condition& condition) const
{
    const Node& node = nodes_[element];
    const AttributeList& attributes = node.element.attributes;
    switch (condition.kind) {
    case ConditionKind::TagName:
        return node.name == condition.first;
    case ConditionKind::Class:
        return condition.first != kNoAtom &&
               attributes.Has(tree_.Names().classAttribute, condition.first);
    case ConditionKind::Id:
        return condition.first != kNoAtom &&
               attributes.Has(tree_.Names().idAttribute, condition.first);
    case ConditionKind::Attribute:
        return condition.first != kNoAtom && attributes.Find(condition.first) != kNoAtom;
    case ConditionKind::AttributeValue:
        return MatchesAttributeValue(element, condition);
    case ConditionKind::State:
        return (node.element.states & condition.number) != 0;
    case ConditionKind::Enabled:
        return (node.element.states & ElementState::kDisabled) == 0;
    case ConditionKind::FirstChild:
        return PreviousElementSibling(nodes_, element) == kNoNode;
    case ConditionKind::LastChild:
        return NextElementSibling(nodes_, element) == kNoNode;
    case ConditionKind::OnlyChild:
        return PreviousElementSibling(nodes_, element) == kNoNode &&
               NextElementSibling(nodes_, element) == kNoNode;
    case ConditionKind::NthChild:
        return condition.number > 0 && tree_.Positions().IndexOf(element) == condition.number - 1;
    case ConditionKind::Empty:
        return IsEmpty(element);
    case ConditionKind::Root:
        return element == root_;
    case ConditionKind::Not:
        return !MatchesAll(element, condition.negated);
    }
    return false;
}

bool SelectorMatcher::MatchesAttributeValue(NodeId element, const Condition& condition) const
{
    const AttributeList& attributes = nodes_[element].element.attributes;
    const Atom classAttribute = tree_.Names().classAttribute;
    if (condition.first != classAttribute) {
        return condition.first != kNoAtom && condition.second != kNoAtom &&
               attributes.Find(condition.first) == condition.second;
    }
    std::string classes;
    for (const AttributeEntry& entry : attributes.Entries()) {
        if (entry.name == classAttribute) {
            classes += classes.empty() ? "" : " ";
            classes += tree_.Atoms().Text(entry.value);
        }
    }
    return !classes.empty() && classes == condition.text;
}

bool SelectorMatcher::IsEmpty(NodeId element) const
{
    for (NodeId child = nodes_[element].element.firstChild; child != kNoNode;
         child = nodes_[child].next) {
        if (nodes_[child].kind != NodeKind::Comment) {
            return false;
        }
    }
    return true;
}

}  // namespace HtmlEngine::Internal
