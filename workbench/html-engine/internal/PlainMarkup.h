#pragma once

// Reads plain markup in one pass, straight into nodes of the tree: every element is closed by its
// own end tag, nothing stands where an HTML parser would have to repair it, and no part needs a
// parser mode of its own. That is what the panel writes, and most of what people write into
// comments. What is read becomes exactly what an HTML parser makes of it; anything that is not
// certainly plain is refused as a whole. UI thread.
//
// Plain are: text, with ampersands and `<` that begin nothing, and with common character
// references; tags with well-formed attributes of ASCII names; blocks outside of paragraphs; list
// items directly in lists; tables of rows and cells, whose body element may be left out; formatting
// elements that are closed in order; void elements. Comments, raw text, forms, foreign content,
// other characters than HTML allows and malformed UTF-8 are not.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <html-engine/internal/AttributeCollector.h>
#include <html-engine/internal/Tree.h>

namespace HtmlEngine::Internal {

class PlainMarkup {
public:
    explicit PlainMarkup(Tree& tree) : tree_(tree), collector_(tree) {}

    /// Reads what stands inside an element of the name `context` into nodes that are in no tree
    /// yet. False, and nothing made, when the markup or the context is not plain. Used once.
    bool Read(std::string_view html, std::string_view context, NodeRun& run);

    /// The elements that were read, in document order.
    std::vector<NodeId> TakeElements() { return std::move(elements_); }

private:
    /// What is known of one element name.
    struct Name {
        unsigned traits = 0;
        /// Its place among the names with traits, for counting; see kNoPlace.
        std::size_t place = 0;
    };

    /// A start tag that was read: one like it, byte by byte, need not be read again.
    struct KnownTag {
        /// From the name to the closing bracket.
        std::string_view written;
        std::string_view name;
        Name known;
        bool closesItself = false;
        /// The element that was made from it.
        NodeId model = kNoNode;
    };

    struct OpenElement {
        NodeId element;
        std::string_view name;
        Name known;
    };

    static constexpr std::size_t kTagSets = 32;
    static constexpr std::size_t kTagsPerSet = 4;

    struct KnownTags {
        std::array<KnownTag, kTagsPerSet> tags;
        std::size_t oldest = 0;
    };

    static Name NameOf(std::string_view name);
    static bool IsPlainContext(std::string_view context);

    bool ReadAll();
    bool ReadText();
    bool ReadStartTag();
    bool ReadEndTag();
    bool ReadNewTag(KnownTag& tag);
    bool ReadAttributes(KnownTag& tag);
    bool ReadValue(std::string_view& value);
    /// Reads up to `stop`: a quote, or `<` for text, which may also end with the markup.
    bool ReadCharacters(char stop, std::string_view& text);
    /// Goes on to the next ASCII character without this use; false for one that HTML does not
    /// allow.
    bool SkipCharacters(std::uint8_t use);
    bool ReadReference(std::size_t& from);

    bool SkipSpace();
    bool IsAtEnd() const { return at_ == html_.size(); }
    bool BeginsTag(std::size_t at) const;
    KnownTags& TagsLike(std::size_t at);

    bool MayStandHere(const KnownTag& tag) const;
    unsigned TraitsAround() const;
    bool Open(KnownTag& tag);
    NodeId CreateElement(const KnownTag& tag);
    void OpenTableBody();
    void Append(NodeId node);
    void Push(NodeId element, std::string_view name, Name known);
    void Pop();

    Tree& tree_;
    AttributeCollector collector_;
    std::string_view html_;
    std::size_t at_ = 0;
    NodeRun top_;
    std::vector<NodeId> elements_;
    std::vector<OpenElement> open_;
    /// How many elements of each name with traits are open.
    std::vector<std::uint32_t> openCounts_;
    std::size_t openParagraphs_ = 0;
    std::vector<KnownTags> known_{kTagSets};
    std::vector<std::string_view> attributeNames_;
    std::string lowerName_;
    std::string characters_;
};

}  // namespace HtmlEngine::Internal
