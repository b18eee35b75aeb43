#include "ReaderComparison.h"

#include <html-engine/internal/ParsedMarkup.h>
#include <html-engine/internal/PlainMarkup.h>
#include <html-engine/internal/TreeWalk.h>

namespace HtmlEngine::Test {

namespace {

using namespace Internal;

/// Everything that a node says of itself and of its neighbours, which are named by their distance
/// in document order.
class Description {
public:
    explicit Description(const Tree& tree) : tree_(tree), nodes_(tree.Nodes()) {}

    std::string Of(NodeRun run)
    {
        NodeId previous = kNoNode;
        for (NodeId id = run.first; id != kNoNode; id = nodes_[id].next) {
            VisitSubtree(
                nodes_, id, [&](NodeId node) { Add(node); },
                [&](NodeId node) { text_ += "/" + std::string(Name(node)) + "\n"; });
            CheckLink(nodes_[id].previous == previous && nodes_[id].parent == kNoNode);
            previous = id;
        }
        CheckLink(previous == run.last);
        return std::move(text_);
    }

private:
    std::string_view Name(NodeId id) const { return tree_.Atoms().Text(nodes_[id].name); }

    void Add(NodeId id)
    {
        const Node& node = nodes_[id];
        if (!node.IsElement()) {
            text_ += node.IsText() ? "\"" : "!";
            text_ += node.text.View();
            text_ += "\"\n";
            return;
        }
        const ElementPart& element = node.element;
        text_ += Name(id);
        text_ += " " + std::to_string(node.flags) + " " + std::to_string(element.states) + " " +
                 std::to_string(element.elementCount);
        for (const AttributeEntry& entry : element.attributes.Entries()) {
            text_ += " [";
            text_ += tree_.Atoms().Text(entry.name);
            text_ += "]=[";
            text_ += tree_.Atoms().Text(entry.value);
            text_ += "]";
        }
        text_ += "\n";
        NodeId previous = kNoNode;
        for (NodeId child = element.firstChild; child != kNoNode; child = nodes_[child].next) {
            CheckLink(nodes_[child].parent == id && nodes_[child].previous == previous);
            previous = child;
        }
        CheckLink(previous == element.lastChild);
    }

    void CheckLink(bool isRight) { text_ += isRight ? "" : "a wrong link\n"; }

    const Tree& tree_;
    const NodeStore& nodes_;
    std::string text_;
};

}  // namespace

ReaderComparison CompareReaders(std::string_view html, std::string_view context)
{
    Tree tree;
    const std::size_t atoms = tree.Atoms().Size();
    ReaderComparison result;
    NodeRun plain;
    result.isPlain = PlainMarkup(tree).Read(html, context, plain);
    if (result.isPlain) {
        const std::string plainTree = Description(tree).Of(plain);
        const NodeRun parsed = ParsedMarkup(html, context).Build(tree);
        const std::string parsedTree = Description(tree).Of(parsed);
        if (plainTree != parsedTree) {
            result.difference = "read as\n" + plainTree + "parsed as\n" + parsedTree;
        }
        tree.Dispose(plain);
        tree.Dispose(parsed);
    }
    if (tree.Nodes().LiveCount() != 0 || tree.Atoms().Size() != atoms) {
        result.difference += "something is left over\n";
    }
    return result;
}

}  // namespace HtmlEngine::Test
