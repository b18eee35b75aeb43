// Markup on its way into the tree. Reading comes before anything in the tree is changed; what is
// never linked is disposed of. UI thread.
#pragma once

#include "html-engine/internal/MarkupReader.h"
#include "html-engine/internal/Tree.h"

#include <string_view>

namespace HtmlEngine::Internal {

class NewContent {
public:
    // What is to stand inside `parent`. Borrows `html` until it is linked.
    NewContent(Tree& tree, std::string_view html, NodeId parent);

    NewContent(const NewContent&) = delete;
    NewContent& operator=(const NewContent&) = delete;
    ~NewContent();

    // Puts the nodes into the tree as Tree::Link does; whether there were any. Called once.
    bool Link(NodeId parent, NodeId previous);

private:
    Tree& tree_;
    MarkupReader reader_;
    NodeRun run_;
};

}  // namespace HtmlEngine::Internal
