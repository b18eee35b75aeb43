#include <html-engine/internal/NewContent.h>

#include <utility>

#include <html-engine/internal/PlainMarkup.h>

namespace HtmlEngine::Internal {

NewContent::NewContent(Tree& tree, std::string_view html, std::string_view context) : tree_(tree)
{
    if (!PlainMarkup(tree).Read(html, context, run_)) {
        parsed_.emplace(html, context);
    }
}

NewContent::~NewContent()
{
    tree_.Dispose(run_);
}

NodeRun NewContent::Take()
{
    return parsed_.has_value() ? parsed_->Build(tree_) : std::exchange(run_, {});
}

}  // namespace HtmlEngine::Internal
