#include "html-engine/internal/NewContent.h"

#include <utility>

namespace HtmlEngine::Internal {

namespace {

MarkupContext ContextOf(const Tree& tree, NodeId parent)
{
    const Node& node = tree.Nodes()[parent];
    const auto flags =
        static_cast<std::uint8_t>(node.flags & (NodeFlag::kForeign | NodeFlag::kMathMl));
    MarkupContext context{tree.Atoms().Text(node.name), flags, 0};
    for (NodeId at = parent; at != kNoNode; at = tree.Nodes()[at].parent) {
        ++context.depth;
    }
    return context;
}

}  // namespace

NewContent::NewContent(Tree& tree, std::string_view html, NodeId parent)
    : tree_(tree), reader_(tree, html), run_(reader_.ReadContent(ContextOf(tree, parent)))
{
}

NewContent::~NewContent()
{
    tree_.Dispose(run_);
}

bool NewContent::Link(NodeId parent, NodeId previous)
{
    const NodeRun run = std::exchange(run_, {});
    tree_.Link(parent, previous, run, reader_.Elements());
    return !run.IsEmpty();
}

}  // namespace HtmlEngine::Internal
