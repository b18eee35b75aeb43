// Selector queries of a Document.

#include "html-engine/Document.h"
#include "html-engine/internal/DocumentParts.h"
#include "html-engine/internal/Selector.h"
#include "html-engine/internal/SelectorMatcher.h"
#include "html-engine/internal/SelectorQuery.h"

namespace HtmlEngine {

using namespace Internal;

namespace {

// Success with `selector` filled, or what forbids the query.
Result Prepare(const Tree& tree, NodeId element, std::string_view text, Selector& selector)
{
    if (element == kNoNode) {
        return Result::UnknownElement;
    }
    return SelectorParser(text, tree.Atoms()).Parse(selector) ? Result::Success
                                                              : Result::MalformedSelector;
}

}  // namespace

Result Document::SelectAll(ElementHandle root, std::string_view selector,
                           const MatchCallback& callback) const
{
    const NodeId id = parts_->Resolve(root);
    Selector parsed;
    if (const Result result = Prepare(parts_->tree, id, selector, parsed);
        result != Result::Success) {
        return result;
    }
    std::vector<ElementHandle> matches;
    for (const NodeId match : SelectorQuery(parts_->tree, id, parsed).All()) {
        matches.push_back(parts_->HandleOf(match));
    }
    for (const ElementHandle match : matches) {
        if (IsKnown(match) && !callback(match)) {
            break;
        }
    }
    return Result::Success;
}

Result Document::SelectFirst(ElementHandle root, std::string_view selector,
                             ElementHandle& match) const
{
    match = kNoElement;
    const NodeId id = parts_->Resolve(root);
    Selector parsed;
    const Result result = Prepare(parts_->tree, id, selector, parsed);
    if (result == Result::Success) {
        match = parts_->HandleOf(SelectorQuery(parts_->tree, id, parsed).First());
    }
    return result;
}

Result Document::Closest(ElementHandle element, std::string_view selector,
                         ElementHandle& match) const
{
    match = kNoElement;
    NodeId id = parts_->Resolve(element);
    Selector parsed;
    const Result result = Prepare(parts_->tree, id, selector, parsed);
    if (result == Result::Success) {
        const SelectorMatcher matcher(parts_->tree, parts_->tree.Root());
        while (id != kNoNode && !matcher.Matches(id, parsed)) {
            id = parts_->At(id).parent;
        }
        match = parts_->HandleOf(id);
    }
    return result;
}

Result Document::Matches(ElementHandle element, std::string_view selector, bool& matches) const
{
    matches = false;
    const NodeId id = parts_->Resolve(element);
    Selector parsed;
    const Result result = Prepare(parts_->tree, id, selector, parsed);
    if (result == Result::Success) {
        matches = SelectorMatcher(parts_->tree, parts_->tree.Root()).Matches(id, parsed);
    }
    return result;
}

std::string Document::DescribeSelectorProblem(std::string_view selector)
{
    const AtomTable noNames;
    Selector parsed;
    SelectorParser parser(selector, noNames);
    parser.Parse(parsed);
    return parser.Problem();
}

}  // namespace HtmlEngine
