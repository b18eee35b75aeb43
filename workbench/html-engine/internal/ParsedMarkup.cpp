#include <html-engine/internal/ParsedMarkup.h>

#include <chrono>
#include <csetjmp>
#include <vector>

#include <gumbo.h>

#include <html-engine/internal/Ascii.h>
#include <html-engine/internal/AttributeCollector.h>
#include <html-engine/internal/Utf8.h>

namespace HtmlEngine::Internal {

namespace {

// Panel markup needs about 20 bytes of parse tree per byte.
constexpr std::size_t kArenaBytes = std::size_t{256} * 1024 * 1024;
constexpr std::size_t kArenaBytesPerByte = 40;

// Panel markup needs about 0.06 microseconds per byte.
constexpr std::chrono::milliseconds kParseTime{2000};
constexpr std::size_t kBytesPerMillisecond = 250;

GumboArena::Limits LimitsFor(std::string_view html)
{
    return {kArenaBytes + kArenaBytesPerByte * html.size(),
            kParseTime + std::chrono::milliseconds(html.size() / kBytesPerMillisecond)};
}

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

/// Turns parsed nodes into nodes of the tree, on a stack of its own.
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

}  // namespace

ParsedMarkup::ParsedMarkup(std::string_view html, bool isFragment, std::string_view context)
    : isFragment_(isFragment), source_(RepairUtf8(html, repaired_))
{
    GumboOptions options = kGumboDefaultOptions;
    options.allocator = &GumboArena::Allocate;
    options.deallocator = &GumboArena::Deallocate;
    options.max_errors = 0;
    if (isFragment) {
        options.fragment_context =
            gumbo_tagn_enum(context.data(), static_cast<unsigned int>(context.size()));
    }
    for (const bool dropFormatting : {false, true}) {
        guard_ = std::make_unique<MarkupGuard>(dropFormatting);
        if (Run(guard_->Limit(source_), options) || arena_->RanOutOfTime()) {
            return;
        }
    }
}

bool ParsedMarkup::Run(std::string_view html, const GumboOptions& options)
{
    arena_ = std::make_unique<GumboArena>(LimitsFor(html));
    GumboOptions withArena = options;
    withArena.userdata = arena_.get();
    if (setjmp(arena_->LimitReached()) != 0) {
        output_ = nullptr;
        return false;
    }
    output_ = gumbo_parse_with_options(&withArena, html.data() == nullptr ? "" : html.data(),
                                       html.size());
    return true;
}

NodeRun ParsedMarkup::Build(Tree& tree) const
{
    if (output_ == nullptr) {
        return BuildPlainText(tree);
    }
    NodeBuilder builder(tree);
    NodeRun run;
    if (!isFragment_) {
        builder.Build(*output_->root, run);
        return run;
    }
    const GumboVector& content = output_->root->v.element.children;
    for (unsigned int index = 0; index < content.length; ++index) {
        builder.Build(*static_cast<const GumboNode*>(content.data[index]), run);
    }
    return run;
}

NodeRun ParsedMarkup::BuildPlainText(Tree& tree) const
{
    const NodeId text = tree.CreateCharacters(NodeKind::Text, source_);
    if (isFragment_) {
        return {text, text};
    }
    const NodeId html = tree.CreateElement("html");
    const NodeId body = tree.CreateElement("body");
    NodeRun content;
    tree.Append(html, content, tree.CreateElement("head"));
    tree.Append(html, content, body);
    NodeRun bodyContent;
    tree.Append(body, bodyContent, text);
    return {html, html};
}

}  // namespace HtmlEngine::Internal
