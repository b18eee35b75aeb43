// Writes a part of a tree as HTML: classes first as one `class`, the other attributes in source
// order, values in double quotes, void elements without end tag, raw text as it is.
#pragma once

#include "html-engine/internal/Tree.h"

#include <string>
#include <string_view>

namespace HtmlEngine::Internal {

class Serializer {
public:
    explicit Serializer(const Tree& tree) : tree_(tree), nodes_(tree.Nodes()) {}

    std::string Inner(NodeId element);
    std::string Outer(NodeId element);

private:
    void Write(NodeId top);
    void WriteStartTag(NodeId element);
    void WriteEndTag(NodeId element);
    void WriteCharacters(NodeId node);
    void WriteEscaped(std::string_view text, bool inAttribute);

    const Tree& tree_;
    const NodeStore& nodes_;
    std::string out_;
};

}  // namespace HtmlEngine::Internal
