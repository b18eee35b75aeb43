#include "StandardParser.h"

#include "html-engine/internal/Ascii.h"
#include "html-engine/internal/MarkupReader.h"
#include "html-engine/internal/TreeWalk.h"

#include <gumbo.h>
#include <vector>

namespace HtmlEngine::Test {

namespace {

using namespace Internal;

// Everything that a node says of itself and of its neighbours, which are named by their distance
// in document order.
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

std::string ElementName(const GumboElement& element)
{
    GumboStringPiece original = element.original_tag;
    if (original.length > 0) {
        gumbo_tag_from_original_text(&original);
    }
    if (element.tag_namespace == GUMBO_NAMESPACE_SVG && original.length > 0) {
        if (const char* const name = gumbo_normalize_svg_tagname(&original)) {
            return name;
        }
    }
    if (element.tag != GUMBO_TAG_UNKNOWN) {
        return gumbo_normalized_tagname(element.tag);
    }
    return original.length > 0 ? AsciiLower({original.data, original.length}) : "unknown";
}

std::uint8_t FlagsOf(GumboNamespaceEnum name)
{
    switch (name) {
    case GUMBO_NAMESPACE_SVG:
        return NodeFlag::kForeign;
    case GUMBO_NAMESPACE_MATHML:
        return NodeFlag::kForeign | NodeFlag::kMathMl;
    default:
        return 0;
    }
}

std::string AttributeName(const GumboAttribute& attribute)
{
    const std::string name = attribute.name;
    switch (attribute.attr_namespace) {
    case GUMBO_ATTR_NAMESPACE_XLINK:
        return "xlink:" + name;
    case GUMBO_ATTR_NAMESPACE_XML:
        return "xml:" + name;
    case GUMBO_ATTR_NAMESPACE_XMLNS:
        return name == "xmlns" ? name : "xmlns:" + name;
    default:
        return name;
    }
}

// Turns parsed nodes into nodes of the tree, on a stack of its own.
class NodeBuilder {
public:
    explicit NodeBuilder(Tree& tree) : tree_(tree), collector_(tree) {}

    void Build(const GumboNode& top, NodeRun& run)
    {
        Add(top, kNoNode, run);
        while (!open_.empty()) {
            Level& level = open_.back();
            const GumboVector& children = level.source->v.element.children;
            if (level.nextChild == children.length) {
                open_.pop_back();
                continue;
            }
            const auto& child = *static_cast<const GumboNode*>(children.data[level.nextChild++]);
            NodeRun content = tree_.ContentOf(level.element);
            Add(child, level.element, content);
        }
    }

private:
    struct Level {
        const GumboNode* source;
        NodeId element;
        unsigned int nextChild;
    };

    void Add(const GumboNode& source, NodeId parent, NodeRun& run)
    {
        switch (source.type) {
        case GUMBO_NODE_ELEMENT:
        case GUMBO_NODE_TEMPLATE: {
            const GumboElement& parsed = source.v.element;
            const NodeId element =
                tree_.CreateElement(ElementName(parsed), FlagsOf(parsed.tag_namespace));
            ReadAttributes(parsed.attributes, element);
            tree_.Append(parent, run, element);
            open_.push_back({&source, element, 0});
            break;
        }
        case GUMBO_NODE_COMMENT:
            tree_.Append(parent, run,
                         tree_.CreateCharacters(NodeKind::Comment, source.v.text.text));
            break;
        case GUMBO_NODE_TEXT:
        case GUMBO_NODE_CDATA:
        case GUMBO_NODE_WHITESPACE:
            if (*source.v.text.text != '\0') {
                tree_.Append(parent, run,
                             tree_.CreateCharacters(NodeKind::Text, source.v.text.text));
            }
            break;
        case GUMBO_NODE_DOCUMENT:
            break;
        }
    }

    void ReadAttributes(const GumboVector& attributes, NodeId element)
    {
        for (unsigned int index = 0; index < attributes.length; ++index) {
            const auto& attribute = *static_cast<const GumboAttribute*>(attributes.data[index]);
            collector_.Add(AttributeName(attribute),
                           {attribute.original_name.data, attribute.original_name.length},
                           attribute.value);
        }
        if (attributes.length > 0) {
            tree_.SetAttributes(element, collector_.Entries());
            tree_.SetStates(element, collector_.States());
            collector_.Forget();
        }
    }

    Tree& tree_;
    AttributeCollector collector_;
    std::vector<Level> open_;
};

NodeRun ParseByStandard(std::string_view html, std::string_view context, Tree& tree)
{
    GumboOptions options = kGumboDefaultOptions;
    options.fragment_context =
        gumbo_tagn_enum(context.data(), static_cast<unsigned int>(context.size()));
    GumboOutput* const output = gumbo_parse_with_options(&options, html.data(), html.size());
    NodeRun run;
    NodeBuilder builder(tree);
    const GumboVector& content = output->root->v.element.children;
    for (unsigned int index = 0; index < content.length; ++index) {
        builder.Build(*static_cast<const GumboNode*>(content.data[index]), run);
    }
    gumbo_destroy_output(&options, output);
    return run;
}

}  // namespace

std::string DifferenceFromStandard(std::string_view html, std::string_view context)
{
    Tree tree;
    const std::size_t atoms = tree.Atoms().Size();
    std::string difference;
    {
        const NodeRun read = MarkupReader(tree, html).ReadContent({context});
        const NodeRun parsed = ParseByStandard(html, context, tree);
        const std::string readTree = Description(tree).Of(read);
        const std::string parsedTree = Description(tree).Of(parsed);
        if (readTree != parsedTree) {
            difference = "read as\n" + readTree + "by the standard\n" + parsedTree;
        }
        tree.Dispose(read);
        tree.Dispose(parsed);
    }
    if (tree.Nodes().LiveCount() != 0 || tree.Atoms().Size() != atoms) {
        difference += "something is left over\n";
    }
    return difference;
}

}  // namespace HtmlEngine::Test
