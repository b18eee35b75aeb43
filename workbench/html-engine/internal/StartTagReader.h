// Reads start tags with their attributes. A tag is sound when the HTML standard finds no fault with
// the way it is written: its attributes are apart from each other, quotes are closed, and nothing
// outside quotes is `<`, `=` or a quote where none belongs. Three faults do no harm and are passed
// over: an attribute that is there twice, whose first counts, a `/` at the end of a tag that is not
// void, and `=` inside of a value without quotes. Of tags that are written alike, byte by byte,
// only the first is read. UI thread.
#pragma once

#include "html-engine/internal/AttributeCollector.h"
#include "html-engine/internal/ElementTraits.h"
#include "html-engine/internal/Tree.h"

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace HtmlEngine::Internal {

struct StartTag {
    // From the name to the closing bracket.
    std::string_view written;
    std::string_view name;
    // Of the name; kUnknownElement in foreign content alone.
    std::size_t place = kUnknownElement;
    ElementTraits traits = 0;
    // Read inside SVG or MathML, where names are taken as they are written.
    bool isForeign = false;
    bool closesItself = false;
    // A quoted value holds `<`, and so perhaps what was not meant to be inside.
    bool quotesMarkup = false;
    // Values of `id` and `titleid`; empty without them, and where they hold references.
    std::string_view id;
    std::string_view tooltipId;
    // The element that was made from it last, kNoNode before; it may have ended since only with
    // everything that was read.
    NodeId model = kNoNode;
};

class StartTagReader {
public:
    // `html` is well-formed UTF-8; borrowed, as the tags that are read refer to it.
    StartTagReader(Tree& tree, std::string_view html) : html_(html), tree_(tree), collector_(tree)
    {
    }

    // The tag whose `<` stands at `at`; null when no sound tag of a known name stands there. In
    // foreign content every name is known. Valid until the next call.
    StartTag* Read(std::size_t at, bool isForeign);

    // Makes the element of the tag that was read last, in no tree.
    NodeId MakeElement(StartTag& tag, std::uint8_t flags);

    // Gives the attributes of the tag that was read last to an element that has none.
    void GiveAttributes(NodeId element);

private:
    static constexpr std::size_t kTagSets = 32;
    static constexpr std::size_t kTagsPerSet = 4;

    struct TagSet {
        std::array<StartTag, kTagsPerSet> tags;
        std::size_t oldest = 0;
    };

    TagSet& TagsLike(std::size_t at);
    bool ReadNew(std::size_t at, bool isForeign, StartTag& tag);
    bool ReadAttributes(StartTag& tag);
    bool ReadEnd(StartTag& tag);
    bool ReadValue(StartTag& tag, std::string_view& value);
    bool ReadBareValue(std::string_view& value);
    void AddAttribute(std::string_view name, std::string_view value, StartTag& tag);
    bool SkipSpace();
    bool IsAt(char c) const { return at_ < html_.size() && html_[at_] == c; }
    // The value with references and line breaks resolved, in `decoded_` where there are any.
    std::string_view Decoded(std::string_view value);

    std::string_view html_;
    std::size_t at_ = 0;
    Tree& tree_;
    AttributeCollector collector_;
    // Whether the collector holds attributes that no element has got.
    bool isCollected_ = false;
    std::vector<TagSet> sets_{kTagSets};
    std::vector<std::string_view> names_;
    std::string lowerName_;
    std::string decoded_;
};

}  // namespace HtmlEngine::Internal
