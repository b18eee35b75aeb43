#pragma once

// Markup that has been through the HTML parser and waits to become nodes of a tree. Parsing and
// building are two steps because the content that is replaced goes in between: its places are used
// again.
//
// Any bytes are accepted. What the parser cannot do within its limits (see GumboArena) is tried
// once more without formatting elements, and then taken as plain text.

#include <memory>
#include <string>
#include <string_view>

#include <html-engine/internal/GumboArena.h>
#include <html-engine/internal/MarkupGuard.h>
#include <html-engine/internal/Tree.h>

struct GumboInternalNode;
struct GumboInternalOptions;
struct GumboInternalOutput;

namespace HtmlEngine::Internal {

class ParsedMarkup {
public:
    /// A whole page.
    explicit ParsedMarkup(std::string_view html) : ParsedMarkup(html, false, {}) {}

    /// What stands inside an element of the name `context`.
    ParsedMarkup(std::string_view html, std::string_view context)
        : ParsedMarkup(html, true, context)
    {
    }

    ParsedMarkup(const ParsedMarkup&) = delete;
    ParsedMarkup& operator=(const ParsedMarkup&) = delete;

    /// Makes the nodes, in no tree yet: for a page the one `html` element, else any number.
    NodeRun Build(Tree& tree) const;

private:
    ParsedMarkup(std::string_view html, bool isFragment, std::string_view context);

    bool Run(std::string_view html, const GumboInternalOptions& options);
    NodeRun BuildPlainText(Tree& tree) const;

    bool isFragment_;
    std::string repaired_;
    std::string_view source_;
    std::unique_ptr<MarkupGuard> guard_;
    std::unique_ptr<GumboArena> arena_;
    /// In the arena; null when the markup is taken as plain text.
    GumboInternalOutput* output_ = nullptr;
};

}  // namespace HtmlEngine::Internal
