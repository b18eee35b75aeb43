// Reads HTML into nodes of the tree, in one pass, and accepts any bytes: a mistake affects only the
// element that holds it. UI thread.
//
// Markup that needs no repair gives the tree of the HTML standard, omitted end tags included.
// Malformed markup is repaired by these rules:
//
// - A `<` that begins no sound tag (StartTagReader.h) of a known name (ElementTraits.h) is text. So
//   are comments and raw text, `<style>` say, that are never ended.
// - What is left open ends with the element that holds it; nothing is opened again.
// - An end tag closes the nearest open element of its name, unless a list, list item, table,
//   caption or cell has begun since; then, and without such an element, it does nothing.
// - Parts of tables outside of tables do nothing, their content stays.
// - What would lie more than 512 elements deep becomes part of the 512th.
//
// An element that names its tooltip in `titleid`, which is the `popup` of that id inside it, is
// kept together (TooltipBoundaries.h): no tag ends it before the tooltip, the tooltip ends what was
// left open before it, and `</popup>` right before the element's own end tag ends what was left
// open since.
#pragma once

#include "html-engine/internal/StartTagReader.h"
#include "html-engine/internal/TooltipBoundaries.h"
#include "html-engine/internal/Tree.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace HtmlEngine::Internal {

// The element that markup is read into.
struct MarkupContext {
    std::string_view name;
    // NodeFlag::kForeign and kMathMl, where it is SVG's or MathML's.
    std::uint8_t flags = 0;
    // How many elements lie around what is read.
    std::uint32_t depth = 0;
};

class MarkupReader {
public:
    // Any bytes; borrowed.
    MarkupReader(Tree& tree, std::string_view html);
    MarkupReader(const MarkupReader&) = delete;
    MarkupReader& operator=(const MarkupReader&) = delete;

    // The content of an element, in no tree yet. This or ReadPage is called once.
    NodeRun ReadContent(const MarkupContext& context);

    // A page: its `html` element with `head` and `body`, in no tree yet.
    NodeId ReadPage();

    // The elements that ReadContent has made, in document order.
    std::span<const NodeId> Elements() const { return elements_; }

private:
    // A place among the open elements, or among the known names.
    using Level = std::uint32_t;
    static constexpr Level kNone = static_cast<Level>(-1);
    static constexpr std::size_t kNowhere = TooltipBoundaries::kNowhere;

    struct OpenElement {
        std::string_view name;
        NodeId element = kNoNode;
        // Among the known names.
        Level place = kNone;
        ElementTraits traits = 0;
        std::uint32_t depth = 0;
        // The next element around it that has its name.
        Level namesake = kNone;
        // Of this and the elements around it the innermost ...
        Level barrier = 0;
        Level tablePart = kNone;  // ... that is one or a table, and in no list of its own
        // From here on inwards, up to this, every end tag may be left out.
        Level optionalFrom = 0;
        std::uint8_t flags = 0;
    };

    // The outermost open element that names a tooltip.
    struct Owner {
        Level place = kNone;
        bool hasTooltip = false;  // which has begun
        std::string_view name;
        std::string_view tooltipId;
    };

    // How much of a page there is; what is no page is all body.
    enum class PageStage : std::uint8_t { BeforeHead, Head, AfterHead, Body };

    void ReadAll();
    bool ReadMarkup();
    bool ReadStartTag();
    bool ReadEndTag();
    bool ReadComment();
    bool ReadDoctype();
    bool ReadCData();
    // One reference, line break or run of text, which goes no further than `end`.
    void ReadText(std::size_t end);
    void ReadRawText(ElementTraits traits, std::size_t end);

    // Text is collected until something else comes.
    void AddText(std::string_view text);
    void AddDecoded(std::string_view text);
    void FlushText();
    void AppendText(std::string_view text);
    void SkipLineBreak();

    // Where `end` stands before everything that is never ended must have ended; kNowhere if it
    // does not.
    std::size_t FindEnd(std::string_view end, std::size_t from);
    std::size_t FindRawTextEnd(const StartTag& tag, std::size_t from);
    std::size_t Bound();

    void Open(StartTag& tag);
    bool IsTooltipOfOwner(const StartTag& tag) const;
    // Whether the open element there is kept open by a tooltip of its own or of one inside.
    bool IsOwned(Level at);
    void BeginTooltip();
    void EndImplied(ElementTraits traits);
    bool MakeRoomForTablePart(ElementTraits traits);
    void OpenImplied(std::string_view name);
    void Push(NodeId element, std::string_view name, std::size_t place, std::uint8_t flags,
              std::string_view tooltipId);

    void Close(std::string_view name, std::size_t place);
    Level NearestOpen(std::string_view name, std::size_t place) const;
    bool MayEnd(Level at);
    // Closes everything from `first` inwards.
    void CloseFrom(std::size_t first);
    // Closes one that names no tooltip.
    void CloseInnermost();

    void EnterStageOf(ElementTraits traits);
    bool IsPageStructure(const StartTag& tag);
    void EnterBody();

    bool IsForeign() const;
    NodeId Current() const { return open_.back().element; }
    void Append(NodeId parent, NodeId node);

    Tree& tree_;
    std::string repaired_;
    std::string_view html_;
    std::size_t at_ = 0;
    StartTagReader tags_;
    TooltipBoundaries tooltips_;

    NodeRun top_;
    std::vector<NodeId> elements_;
    // The first is what the markup is read into.
    std::vector<OpenElement> open_;
    // Of each known name the innermost open element.
    std::vector<Level> innermost_;
    Owner owner_;

    // Text that is in no node yet: the buffer, then the slice.
    NodeId textParent_ = kNoNode;
    std::string textBuffer_;
    std::string_view textSlice_;

    // Ends that were looked for in vain, and up to where.
    std::vector<std::pair<std::string, std::size_t>> missing_;

    PageStage stage_ = PageStage::Body;
    NodeId pageRoot_ = kNoNode;
    NodeId pageHead_ = kNoNode;
    NodeId pageBody_ = kNoNode;
};

}  // namespace HtmlEngine::Internal
