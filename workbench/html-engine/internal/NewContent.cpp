#include <html-engine/internal/NewContent.h>

#include <utility>

#include <html-engine/internal/PlainMarkup.h>

namespace HtmlEngine::Internal {

NewContent::NewContent(Tree& tree, std::string_view html, std::string_view context) : tree_(tree)
{
    PlainMarkup plain(tree);
    if (plain.Read(html, context, run_)) {
        elements_ = plain.TakeElements();
    } else {
        parsed_.emplace(html, context);
    }
}

NewContent::~NewContent()
{
    tree_.Dispose(run_);
}

bool NewContent::Link(NodeId parent, NodeId previous)
{
    const NodeRun run = parsed_.has_value() ? parsed_->Build(tree_) : std::exchange(run_, {});
    tree_.Link(parent, previous, run, elements_);
    return !run.IsEmpty();
}

}  // namespace HtmlEngine::Internal
