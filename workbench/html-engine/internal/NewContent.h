#pragma once

// Markup on its way into the tree, read by whichever reader is the right one: PlainMarkup where it
// can, else ParsedMarkup. Reading comes before anything in the tree is changed; what is never
// linked is disposed of. UI thread.

#include <optional>
#include <string_view>
#include <vector>

#include <html-engine/internal/ParsedMarkup.h>
#include <html-engine/internal/Tree.h>

namespace HtmlEngine::Internal {

class NewContent {
public:
    /// What stands inside an element of the name `context`. Borrows `html` until it is linked.
    NewContent(Tree& tree, std::string_view html, std::string_view context);

    NewContent(const NewContent&) = delete;
    NewContent& operator=(const NewContent&) = delete;
    ~NewContent();

    /// Puts the nodes into the tree as Tree::Link does; whether there were any. Called once.
    bool Link(NodeId parent, NodeId previous);

private:
    Tree& tree_;
    /// Nodes that are made already; otherwise `parsed_` makes them when they are wanted, in
    /// the places of the content that was removed by then.
    NodeRun run_;
    std::vector<NodeId> elements_;
    std::optional<ParsedMarkup> parsed_;
};

}  // namespace HtmlEngine::Internal
