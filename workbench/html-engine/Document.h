// The in-process HTML engine: one page as a tree of elements, text and comments, read from HTML,
// addressed from outside by element handles, searched by CSS selectors and written back as HTML.
// It computes no layout, runs no scripts and fetches nothing.
//
// Everything here belongs to the UI thread: a Document is created, used and destroyed on one
// thread, and takes no locks. All text is UTF-8; malformed sequences and NUL bytes in text that
// comes in are replaced by U+FFFD. Names of elements and attributes are kept in lower case (SVG
// keeps its own spelling). Doctype and comments outside the page's root are not kept.
//
// No operation recurses over the depth of the tree or trusts the markup: any bytes may be loaded.
// Markup that no parser handles in bearable time is cut down first: nesting beyond 512 levels (more
// in short markup) is flattened, of one tag 512 attributes count, `frameset` is left out. What
// still gets out of hand is read without formatting elements, and in the end as plain text.
#pragma once

#include "html-engine/AttachedHandler.h"
#include "html-engine/TreeObserver.h"
#include "html-engine/Types.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace HtmlEngine {

// A handler on the way from an element to the root, with the element that it is attached to.
struct HandlerOnPath {
    ElementHandle element = kNoElement;
    std::shared_ptr<AttachedHandler> handler;
};

class Document {
public:
    // Called once per match; false ends the enumeration.
    using MatchCallback = std::function<bool(ElementHandle)>;

    // An empty page: `html` with an empty `head` and an empty `body`. [ui-thread]
    Document();

    // Ends every attachment and every element, used or not. Detached handlers see a document
    // without a root, in which every handle is unknown and nothing can be loaded.
    ~Document();

    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    // ---- Page -----------------------------------------------------------------------------

    // Replaces the whole page by what an HTML parser makes of `html`; a byte-order mark is
    // skipped, empty text gives the empty page. Elements of the old page that have uses stay as
    // detached ones. Never fails.
    void Load(std::string_view html);

    // The page's `html` element; kNoElement only while the document is being destroyed.
    ElementHandle Root() const;

    // Grows with every change of the tree, of text, attributes, style or states, in the whole
    // document (detached elements included). An operation that changes nothing leaves it.
    std::uint64_t ChangeCount() const;

    // ---- Life of elements -----------------------------------------------------------------

    // Begins a use: the element outlives its removal from the tree until the use ends. Uses are
    // counted. Fails with UnknownElement for a dead handle.
    Result Use(ElementHandle element);

    // Ends one use. A detached element ends with its last use, and with it everything inside it
    // that has no uses of its own (what has is then detached by itself). Fails with
    // UnknownElement, or NotHeld when there is no use to end.
    Result Unuse(ElementHandle element);

    // Whether the handle names an element, in the tree or detached.
    bool IsKnown(ElementHandle element) const;

    // Whether the element is in the page's tree.
    bool IsAttached(ElementHandle element) const;

    // ---- Structure ------------------------------------------------------------------------
    // Children are counted in elements; text and comments between them do not count. When a part
    // of the tree is removed, the uppermost elements in use in it stay, each with everything inside
    // it, and have no parent any more. Unknown handles yield kNoElement, 0 or the empty text.

    ElementHandle Parent(ElementHandle element) const;
    std::size_t ChildCount(ElementHandle element) const;

    // The child at a 0-based position; kNoElement beyond the last one.
    ElementHandle Child(ElementHandle element, std::size_t index) const;

    // 0-based position among the parent's element children; 0 for an element without a parent.
    std::size_t IndexInParent(ElementHandle element) const;

    ElementHandle NextSibling(ElementHandle element) const;
    ElementHandle PreviousSibling(ElementHandle element) const;

    // Name, in lower case for HTML; valid until the tree changes.
    std::string_view TagName(ElementHandle element) const;

    // ---- Content --------------------------------------------------------------------------

    // Parses `html` as the place that it goes to would (in a `ul`, in a `tr`, ...) and puts it
    // there. Empty markup is allowed everywhere: it clears the content, removes the replaced
    // element, or inserts nothing. Works on detached elements too. Fails with UnknownElement;
    // NoPlace for the three outer positions on an element without a parent (the page's root never
    // can be replaced); NoContent for the three inner ones on a void element.
    Result SetHtml(ElementHandle element, std::string_view html, InsertPosition position);

    // Replaces the content by one text node, or by nothing when the text is empty. Fails with
    // UnknownElement or NoContent.
    Result SetText(ElementHandle element, std::string_view text);

    // Removes the element with everything inside it. Fails with UnknownElement, or NoPlace for an
    // element without a parent.
    Result Delete(ElementHandle element);

    // All text inside, in document order, comments left out.
    std::string TextContent(ElementHandle element) const;

    // The content, or the element with its content, as HTML that parses back to the same tree
    // wherever HTML can express it. Deterministic: classes first as one `class`, then the other
    // attributes in source order, values in double quotes.
    std::string InnerHtml(ElementHandle element) const;
    std::string OuterHtml(ElementHandle element) const;

    // ---- Attributes, classes, style -------------------------------------------------------
    // An attribute whose name begins with a point names a class (`<li .highlight .new>`), as the
    // words of `class` do; both are kept as one list without repetitions. A `class` without words
    // does not exist. Names are matched without regard to ASCII case, values exactly.

    // The value, or nothing when the attribute is absent. `class` yields the class list with
    // single spaces, `style` the style text.
    std::optional<std::string> Attribute(ElementHandle element, std::string_view name) const;

    // Sets or adds one. `class` replaces the class list; a name beginning with a point adds to it.
    // `disabled` also sets the state. Fails with UnknownElement or BadName.
    Result SetAttribute(ElementHandle element, std::string_view name, std::string_view value);

    // Removes one; an absent one is no error. `disabled` also clears the state; a name beginning
    // with a point takes the class away. Fails with UnknownElement.
    Result RemoveAttribute(ElementHandle element, std::string_view name);

    // Every attribute as it would be serialised, in that order.
    std::vector<std::pair<std::string, std::string>> Attributes(ElementHandle element) const;

    // The value of an inline style property, empty when it is not set.
    std::string Style(ElementHandle element, std::string_view property) const;

    // Sets an inline style property in its place, or after the others; an empty value removes it.
    // The `style` attribute shows the result. Fails with UnknownElement, or BadName for a property
    // or a value that would not read back as one declaration.
    Result SetStyle(ElementHandle element, std::string_view property, std::string_view value);

    // ---- States ---------------------------------------------------------------------------

    // The state bits; 0 for an unknown handle.
    std::uint32_t State(ElementHandle element) const;

    // Clears `clearBits`, then sets `setBits`. Setting `expanded` clears `collapsed` and the other
    // way about; when both are set at once, `expanded` stays. Setting `current` takes it from the
    // element that had it under the same handler: the nearest ancestor with an attached handler,
    // or the page where there is none. On a detached element nothing else is affected.
    // Fails with UnknownElement.
    Result SetState(ElementHandle element, std::uint32_t setBits, std::uint32_t clearBits);

    // Whether inline style hides the element: it or an ancestor has `visibility` collapse or
    // hidden, or `display` none. Style sheets are not looked at.
    bool IsHidden(ElementHandle element) const;

    // Whether the element or an ancestor is in state disabled.
    bool IsDisabled(ElementHandle element) const;

    // ---- Selectors ------------------------------------------------------------------------
    // Narrow CSS: type, *, .class, #id, [a], [a=v], [a="v"], :first-child, :last-child,
    // :only-child, :nth-child(n), :empty, :not(compound), :root, the states :current, :disabled,
    // :enabled, :expanded, :collapsed, :hover, :active, :focus; joined by descendant, >, +, ~ and
    // comma. In a query `:root` is the element that the query starts from; in Matches and Closest
    // it is the page's root. Anything else is MalformedSelector; an empty selector is too.

    // Every match below `root` (which itself is none) in document order. The matches are found
    // before the first call, so `callback` may change the document; a match that has ended by then
    // is left out.
    Result SelectAll(ElementHandle root, std::string_view selector,
                     const MatchCallback& callback) const;

    // The first match below `root`, kNoElement in `match` when there is none or on failure.
    Result SelectFirst(ElementHandle root, std::string_view selector, ElementHandle& match) const;

    // The element itself or its nearest ancestor that matches, else kNoElement.
    Result Closest(ElementHandle element, std::string_view selector, ElementHandle& match) const;

    // Whether the element matches; false on failure.
    Result Matches(ElementHandle element, std::string_view selector, bool& matches) const;

    // What is wrong with a selector, as "reason at character N"; empty when it is well formed.
    static std::string DescribeSelectorProblem(std::string_view selector);

    // ---- Handlers -------------------------------------------------------------------------

    // Attaches a handler, shared, until the element leaves the tree. An element may have several;
    // they keep the order in which they came. Fails with UnknownElement, NoPlace for a detached
    // element, or HandlerRefused.
    Result AttachHandler(ElementHandle element, std::shared_ptr<AttachedHandler> handler);

    // Ends one attachment and tells the handler. Fails with UnknownElement or NotHeld.
    Result DetachHandler(ElementHandle element, const AttachedHandler* handler);

    // The handlers from the element up to the root, nearest first, those of one element in the
    // order in which they were attached.
    std::vector<HandlerOnPath> HandlersOf(ElementHandle element) const;

    // ---- Following the tree ----------------------------------------------------------------

    // Replaces the current observer, which receives every later change of the tree in order; null
    // removes it. Borrowed: must be replaced before the observer is destroyed. [ui-thread]
    void SetObserver(TreeObserver* observer);

    // The node of an element, kNoNodeHandle for an unknown handle.
    NodeHandle NodeOf(ElementHandle element) const;

    // The element that the node is; kNoElement for text, comments and unknown handles.
    ElementHandle ElementOf(NodeHandle node) const;

    // The engine's own; defined in its sources.
    class Parts;

private:
    friend class TreeReader;

    std::unique_ptr<Parts> parts_;
};

}  // namespace HtmlEngine
