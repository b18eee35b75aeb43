// From a document to the HTML of its list: pages, items and tooltips filled into their templates.
// Touches no DOM, so that whole lists are rendered on the worker. Made for one rendering and used
// on one thread: its document and the texts of the user's language are looked up once, and its
// buffers are kept from item to item. Failures are ServiceObjectException.
#pragma once

#include "pdf-library/PDFL.h"
#include "ui-engine/BLDocument.SO.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

class ListRenderer {
public:
    // Borrows the document; null has no pages. Fails without a PDF library.
    explicit ListRenderer(BLDocument* document);
    ~ListRenderer();

    // Asked between annotations; the rendering ends early, unfinished, when it answers false.
    std::function<bool()> wanted = [] { return true; };

    // The whole list, in page order, or the no-items message; also as the engine takes it.
    std::wstring RenderResults();
    std::string RenderResultsUtf8();
    // The paragraph that says that there is nothing to show.
    static std::wstring RenderNoItems();
    // One page; empty when it has no listed annotation or cannot be had.
    std::wstring RenderPageItem(std::uint32_t pageIndex);
    // One `li`.
    std::wstring RenderAnnotItem(const std::wstring& uniqueName,
                                 const PDFL::Annotation& annotation);
    // One `popup`.
    std::wstring RenderAnnotTooltip(const PDFL::Annotation& annotation,
                                    const std::wstring& tooltipId);

    // What all annotations of a subtype have in common; looked up once for each.
    struct Kind {
        std::wstring displayName;     // empty without a subtype
        std::wstring_view className;  // as attribute text, such as L".highlight", or empty
    };
    const Kind& KindOf(const PDFL::Annotation& annotation);

    // The contents with every line break turned into "<br/>"; nothing is escaped.
    static std::wstring ConvertContentsText(const PDFL::Annotation& annotation);

    BLDocument* Document() const { return document_; }

private:
    struct Templates;
    struct Captions {
        std::wstring page;  // with %1% for the page number
        std::wstring created;
        std::wstring modified;
        std::wstring dateFormat;  // directives of date_time's output facets
    };

    template <class Render>
    void ForEachPage(const Render& render) const;
    void AppendPageItem(std::uint32_t pageIndex, std::wstring& target);
    void AppendAnnotItem(const std::wstring& uniqueName, const PDFL::Annotation& annotation,
                         std::wstring& target);
    void AppendAnnotTooltip(const Kind& kind, const PDFL::Annotation& annotation,
                            const std::wstring& tooltipId, std::wstring& target);

    BLDocument* const document_;
    const Captions captions_;
    std::map<Atom, Kind> kinds_;
    std::function<void(std::wstring&)> newTooltipId_;  // a random UUID each time, in lower case
    std::unique_ptr<Templates> templates_;
    // Texts on their way into the next larger one.
    std::wstring page_, items_, name_, text_, contents_, title_, subject_, created_, modified_,
        tooltipId_, tooltip_;
};
