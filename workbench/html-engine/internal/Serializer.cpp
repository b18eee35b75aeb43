#include "html-engine/internal/Serializer.h"

#include "html-engine/internal/TreeWalk.h"

#include <cstddef>
#include <utility>

namespace HtmlEngine::Internal {

std::string Serializer::Inner(NodeId element)
{
    for (NodeId child = nodes_[element].element.firstChild; child != kNoNode;
         child = nodes_[child].next) {
        Write(child);
    }
    return std::exchange(out_, {});
}

std::string Serializer::Outer(NodeId element)
{
    Write(element);
    return std::exchange(out_, {});
}

void Serializer::Write(NodeId top)
{
    VisitSubtree(
        nodes_, top,
        [&](NodeId id) {
            if (nodes_[id].IsElement()) {
                WriteStartTag(id);
            } else {
                WriteCharacters(id);
            }
        },
        [&](NodeId id) { WriteEndTag(id); });
}

void Serializer::WriteStartTag(NodeId element)
{
    const Node& node = nodes_[element];
    const AtomTable& atoms = tree_.Atoms();
    const Atom classAttribute = tree_.Names().classAttribute;
    out_ += '<';
    out_ += atoms.Text(node.name);
    bool inClasses = false;
    for (const AttributeEntry& entry : node.element.attributes.Entries()) {
        const bool isClass = entry.name == classAttribute;
        if (inClasses && isClass) {
            out_ += ' ';
        } else {
            out_ += inClasses ? "\" " : " ";
            out_ += atoms.Text(entry.name);
            out_ += "=\"";
        }
        WriteEscaped(atoms.Text(entry.value), true);
        if (!isClass) {
            out_ += '"';
        }
        inClasses = isClass;
    }
    out_ += inClasses ? "\">" : ">";

    const NodeId first = node.element.firstChild;
    if (first != kNoNode && nodes_[first].IsText() &&
        (tree_.TraitsOf(element) & ElementTrait::kDropsLineBreak) != 0 &&
        nodes_[first].text.View().starts_with('\n')) {
        out_ += '\n';
    }
}

void Serializer::WriteEndTag(NodeId element)
{
    if (!tree_.IsVoid(element)) {
        out_ += "</";
        out_ += tree_.Atoms().Text(nodes_[element].name);
        out_ += '>';
    }
}

void Serializer::WriteCharacters(NodeId id)
{
    const Node& node = nodes_[id];
    if (node.kind == NodeKind::Comment) {
        out_ += "<!--";
        out_ += node.text.View();
        out_ += "-->";
    } else if (node.parent != kNoNode &&
               (tree_.TraitsOf(node.parent) & ElementTrait::kRawText) != 0) {
        out_ += node.text.View();
    } else {
        WriteEscaped(node.text.View(), false);
    }
}

void Serializer::WriteEscaped(std::string_view text, bool inAttribute)
{
    std::size_t copied = 0;
    const auto replace = [&](std::size_t at, std::size_t length, std::string_view by) {
        out_ += text.substr(copied, at - copied);
        out_ += by;
        copied = at + length;
    };
    for (std::size_t at = 0; at < text.size(); ++at) {
        switch (text[at]) {
        case '&':
            replace(at, 1, "&amp;");
            break;
        case '<':
            if (!inAttribute) {
                replace(at, 1, "&lt;");
            }
            break;
        case '>':
            if (!inAttribute) {
                replace(at, 1, "&gt;");
            }
            break;
        case '"':
            if (inAttribute) {
                replace(at, 1, "&quot;");
            }
            break;
        case '\r':
            // As it stands it would be read back as a line feed.
            replace(at, 1, "&#13;");
            break;
        case '\xC2':
            if (text.substr(at, 2) == "\xC2\xA0") {
                replace(at, 2, "&nbsp;");
                ++at;
            }
            break;
        default:
            break;
        }
    }
    out_ += text.substr(copied);
}

}  // namespace HtmlEngine::Internal
