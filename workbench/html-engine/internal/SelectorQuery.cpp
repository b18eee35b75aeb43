#include "html-engine/internal/SelectorQuery.h"

#include "html-engine/internal/TreeWalk.h"

#include <algorithm>
#include <bit>

namespace HtmlEngine::Internal {

namespace {

// A compound becomes a step of its own when it is this many times rarer than the step after it.
constexpr std::size_t kWorthAStep = 8;

bool HasCondition(const Compound& compound, ConditionKind kind)
{
    return std::any_of(compound.conditions.begin(), compound.conditions.end(),
                       [&](const Condition& condition) { return condition.kind == kind; });
}

}  // namespace

NodeId SelectorQuery::First() const
{
    NodeId first = kNoNode;
    const auto keepFirst = [&](NodeId element) {
        if (first == kNoNode || tree_.Order().Of(element) < tree_.Order().Of(first)) {
            first = element;
        }
        return false;
    };
    if (!nodes_[root_].Is(NodeFlag::kAttached)) {
        Walk([&](NodeId element) {
            first = element;
            return false;
        });
        return first;
    }
    for (const ComplexSelector& complex : selector_.alternatives) {
        Search(complex, keepFirst);
    }
    return first;
}

std::vector<NodeId> SelectorQuery::All() const
{
    std::vector<NodeId> matches;
    const auto collect = [&](NodeId element) {
        matches.push_back(element);
        return true;
    };
    if (!nodes_[root_].Is(NodeFlag::kAttached)) {
        Walk(collect);
        return matches;
    }
    for (const ComplexSelector& complex : selector_.alternatives) {
        Search(complex, collect);
    }
    if (selector_.alternatives.size() > 1) {
        std::sort(matches.begin(), matches.end(), [&](NodeId left, NodeId right) {
            return tree_.Order().Of(left) < tree_.Order().Of(right);
        });
        matches.erase(std::unique(matches.begin(), matches.end()), matches.end());
    }
    return matches;
}

bool SelectorQuery::Walk(const Found& found) const
{
    for (NodeId id = root_; (id = NextElementWithin(nodes_, id, root_)) != kNoNode;) {
        if (matcher_.Matches(id, selector_) && !found(id)) {
            return false;
        }
    }
    return true;
}

bool SelectorQuery::Search(const ComplexSelector& complex, const Found& found) const
{
    Steps steps;
    return !FindSteps(complex, steps) || Enter(complex, steps, 0, root_, found);
}

bool SelectorQuery::FindSteps(const ComplexSelector& complex, Steps& steps) const
{
    std::size_t costOfNext = 0;
    bool mayStep = true;
    for (std::size_t at = complex.size(); at-- > 0;) {
        Step step;
        step.compound = at;
        const std::size_t cost = CheapestKey(complex[at], step);
        if (cost == 0) {
            return false;
        }
        const bool isLast = at + 1 == complex.size();
        // Behind a sibling combinator the next step would lie beside this one's element, not
        // inside.
        mayStep = mayStep && (isLast || complex[at + 1].combinator == Combinator::Descendant ||
                              complex[at + 1].combinator == Combinator::Child);
        if (isLast || (mayStep && cost < costOfNext / kWorthAStep)) {
            steps.push_back(step);
            costOfNext = cost;
        }
    }
    std::reverse(steps.begin(), steps.end());
    return true;
}

std::size_t SelectorQuery::CheapestKey(const Compound& compound, Step& step) const
{
    std::size_t cost = tree_.AttachedCount();
    for (const Condition& condition : compound.conditions) {
        if (condition.kind == ConditionKind::Root) {
            step.isRoot = true;
            return 1;
        }
        IndexKey key = 0;
        if (!IndexKeyOf(compound, condition, key)) {
            continue;
        }
        const IndexEntry* const entry = tree_.Index().Find(key);
        if (entry == nullptr) {
            return 0;
        }
        if (step.candidates == nullptr || entry->Size() < cost) {
            step.candidates = entry;
            cost = entry->Size();
        }
    }
    return cost;
}

bool SelectorQuery::IndexKeyOf(const Compound& compound, const Condition& condition,
                               IndexKey& key) const
{
    const KnownNames& names = tree_.Names();
    const bool first = HasCondition(compound, ConditionKind::FirstChild) ||
                       HasCondition(compound, ConditionKind::OnlyChild);
    const bool last = HasCondition(compound, ConditionKind::LastChild);
    switch (condition.kind) {
    case ConditionKind::TagName:
        key = MakeIndexKey(IndexKind::TagName, condition.first);
        return true;
    case ConditionKind::Class:
        key = first ? MakeIndexKey(IndexKind::FirstChildWithClass, condition.first)
              : last
                  ? MakeIndexKey(IndexKind::LastChildWithClass, condition.first)
                  : MakeIndexKey(IndexKind::AttributeValue, names.classAttribute, condition.first);
        return true;
    case ConditionKind::Id:
        key = MakeIndexKey(IndexKind::AttributeValue, names.idAttribute, condition.first);
        return true;
    case ConditionKind::Attribute: {
        const bool edgeKnown = condition.first != names.classAttribute;
        key = edgeKnown && first ? MakeIndexKey(IndexKind::FirstChildWithAttribute, condition.first)
              : edgeKnown && last ? MakeIndexKey(IndexKind::LastChildWithAttribute, condition.first)
                                  : MakeIndexKey(IndexKind::Attribute, condition.first);
        return true;
    }
    case ConditionKind::AttributeValue:
        key = condition.first == names.classAttribute || condition.first == names.styleAttribute
                  ? MakeIndexKey(IndexKind::Attribute, condition.first)
                  : MakeIndexKey(IndexKind::AttributeValue, condition.first, condition.second);
        return true;
    case ConditionKind::State:
        key = MakeIndexKey(IndexKind::State, static_cast<Atom>(std::countr_zero(condition.number)));
        return true;
    default:
        return false;
    }
}

bool SelectorQuery::RootSatisfies(const ComplexSelector& complex, const Step& step) const
{
    for (NodeId id = root_; id != kNoNode; id = nodes_[id].parent) {
        if (matcher_.MatchesUpTo(id, complex, step.compound)) {
            return true;
        }
    }
    return false;
}

template <typename Candidate>
bool SelectorQuery::ForEachCandidate(const Step& step, NodeId scope, Candidate&& candidate) const
{
    const DocumentOrder& order = tree_.Order();
    const OrderLabel low = order.Of(scope) + 1;
    const OrderLabel high = order.EndOf(scope);
    bool skipInside = false;
    if (step.isRoot) {
        return true;
    }
    if (step.candidates == nullptr) {
        NodeId id = NextElementWithin(nodes_, scope, scope);
        while (id != kNoNode) {
            skipInside = false;
            if (!candidate(id, skipInside)) {
                return false;
            }
            id = NextElementWithin(nodes_, skipInside ? LastElementInSubtree(nodes_, id) : id,
                                   scope);
        }
        return true;
    }
    if (step.candidates->many == nullptr) {
        const NodeId only = step.candidates->only;
        return order.Of(only) < low || order.Of(only) >= high || candidate(only, skipInside);
    }
    const OrderedNodeList& list = *step.candidates->many;
    OrderedNodeList::Cursor cursor = list.LowerBound(low, order);
    for (NodeId id = list.At(cursor); id != kNoNode && order.Of(id) < high; id = list.At(cursor)) {
        skipInside = false;
        if (!candidate(id, skipInside)) {
            return false;
        }
        cursor = list.Next(cursor);
        if (const NodeId next = list.At(cursor); skipInside && next != kNoNode) {
            if (const OrderLabel end = order.EndOf(id); order.Of(next) < end) {
                cursor = list.LowerBound(end, order);
            }
        }
    }
    return true;
}

bool SelectorQuery::Enter(const ComplexSelector& complex, const Steps& steps, std::size_t step,
                          NodeId scope, const Found& found) const
{
    const Step& here = steps[step];
    const bool isLast = step + 1 == steps.size();
    // Ancestors of the root, and the root, count on the left of a combinator: then all of the
    // root's content is inside a match of this step.
    if (!isLast && scope == root_ && RootSatisfies(complex, here)) {
        return Enter(complex, steps, step + 1, root_, found);
    }
    const auto tryCandidate = [&](NodeId id, bool& skipInside) {
        if (!matcher_.MatchesUpTo(id, complex, here.compound)) {
            return true;
        }
        if (isLast) {
            return found(id);
        }
        skipInside = true;
        return Enter(complex, steps, step + 1, id, found);
    };
    const bool childrenOfRoot = step > 0 && steps[step - 1].isRoot &&
                                here.compound == steps[step - 1].compound + 1 &&
                                complex[here.compound].combinator == Combinator::Child;
    if (!childrenOfRoot) {
        return ForEachCandidate(here, scope, tryCandidate);
    }
    for (NodeId id = FirstElementChild(nodes_, root_); id != kNoNode;
         id = NextElementSibling(nodes_, id)) {
        bool skipInside = false;
        if (!tryCandidate(id, skipInside)) {
            return false;
        }
    }
    return true;
}

}  // namespace HtmlEngine::Internal
