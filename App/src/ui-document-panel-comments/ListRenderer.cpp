#include "ListRenderer.h"

#include "AnnotDate.h"
#include "DecimalText.h"
#include "PageListing.h"
#include "SubtypeTable.h"

#include "service-common/ServiceObjectException.h"
#include "service-common/SingletonStaticData.h"
#include "service-common/WideText.h"
#include "ui-engine/LocalizedStrings.h"
#include "ui-engine/NarrowText.h"
#include "ui-engine/internal/TemplatesPreprocessor.h"

#include <boost/format.hpp>
#include <boost/uuid/random_generator.hpp>
#include <boost/uuid/uuid_io.hpp>

#include <algorithm>
#include <exception>
#include <locale>
#include <new>
#include <random>

namespace {

using namespace std::string_view_literals;

constexpr const wchar_t* kTooltipSection = L"Coments annot info";
constexpr const wchar_t* kNoItems = L"There are no items to show";
constexpr const wchar_t* kDateFormat = L"%Y-%m-%d %H:%M:%S";

// Placeholders of a row of the tooltip that shows a date.
struct DateRow {
    std::wstring_view display, label, date;
};
constexpr DateRow kCreatedRow{L"DATE_CREATED_DISPLAY_ATTRIBUTE", L"DATE_CREATED_KEY",
                              L"DATE_CREATED_VALUE"};
constexpr DateRow kModifiedRow{L"DATE_MODIFIED_DISPLAY_ATTRIBUTE", L"DATE_MODIFIED_KEY",
                               L"DATE_MODIFIED_VALUE"};

// A translated text with the number in place of its placeholder. One that is malformed shows itself
// rather than nothing.
std::wstring FormatTranslated(const std::wstring& text, const std::wstring& number)
{
    try {
        boost::wformat format(text, std::locale::classic());
        format.exceptions(boost::io::no_error_bits);
        std::wstring formatted = (format % number).str();
        const bool hasPlace = text.find(L"%1%") != text.npos;
        if (hasPlace && formatted.find(number) == formatted.npos) {
            throw std::bad_alloc();  // which streams keep to themselves
        }
        return formatted;
    } catch (const boost::io::format_error&) {
        return text;
    }
}

// A source of random UUIDs for one rendering. Seeding the engine word by word, as the library does
// by itself, would cost more than the rendering of twenty items.
class TooltipIds {
public:
    void operator()(std::wstring& id)
    {
        constexpr std::size_t kTextLength = 36;
        id.resize(kTextLength);
        boost::uuids::to_chars(Next(), id.begin());
    }

private:
    static boost::random::mt19937 SeededEngine()
    {
        const boost::uuids::uuid entropy = boost::uuids::random_generator_pure()();
        std::seed_seq seed(entropy.begin(), entropy.end());
        return boost::random::mt19937(seed);
    }

    boost::uuids::uuid Next() { return boost::uuids::basic_random_generator(engine_)(); }

    boost::random::mt19937 engine_ = SeededEngine();
};

// The user's date format. Without one dates stay empty, which hides their rows.
std::wstring DateFormat()
{
    try {
        return LocalizedString(kDateFormat);
    } catch (const std::exception&) {
        CountFailedCall();
        return {};
    }
}

// Shows a row of the tooltip's dates with its label, or hides it when there is no date.
void SetDateRow(TemplatesPreprocessor& tooltip, const DateRow& row, const std::wstring& label,
                const std::wstring& date)
{
    const bool shown = !date.empty();
    const auto action = shown ? TemplateAction::kReplace : TemplateAction::kErase;
    tooltip.SetRule(row.display, TemplateAction::kReplace, shown ? L"block"sv : L"none"sv);
    tooltip.SetRule(row.label, action, label);
    tooltip.SetRule(row.date, action, date);
}

std::wstring TypeName(Atom subtype)
{
    const char* const ownName = AtomService::NameOf(subtype);
    return ownName == nullptr ? std::wstring() : LocalizedString(FromNarrow(ownName));
}

// The page, or an empty one when the document cannot deliver it.
PDFL::Page DeliveredPage(BLDocument* document, std::uint32_t pageIndex)
{
    try {
        return AcquirePage(document, pageIndex);
    } catch (const ServiceObjectException&) {
        return {};  // gone meanwhile: skipped
    }
}

// The text with every line break turned into "<br/>".
void WriteWithBreaks(std::wstring_view source, std::wstring& text)
{
    text.clear();
    std::size_t at = 0;
    std::size_t carriageReturn = source.find(L'\r'), lineFeed = source.find(L'\n');
    for (;;) {
        const std::size_t end = std::min(carriageReturn, lineFeed);
        text.append(source, at, end - at);
        if (end == source.npos) {
            return;
        }
        text.append(L"<br/>");
        at = end + (end == carriageReturn && lineFeed == end + 1 ? 2 : 1);
        if (carriageReturn < at) {
            carriageReturn = source.find(L'\r', at);
        }
        if (lineFeed < at) {
            lineFeed = source.find(L'\n', at);
        }
    }
}

// Keeps a text of the tooltip inside the tooltip: whatever else it holds, an engine closes the
// tooltip, and with it the item, at its end tag alone. What is shown stays as it was written.
void KeepInTooltip(std::wstring& text)
{
    constexpr std::wstring_view kEnd = L"</popup";
    const auto isSame = [](wchar_t left, wchar_t right) {
        return left == right || (left >= L'A' && left <= L'Z' && left + (L'a' - L'A') == right);
    };
    std::wstring kept;
    std::size_t copied = 0;
    for (std::size_t at = text.find(L'<'); at != text.npos; at = text.find(L'<', at + 1)) {
        const std::wstring_view rest = std::wstring_view(text).substr(at, kEnd.size());
        if (std::equal(rest.begin(), rest.end(), kEnd.begin(), kEnd.end(), isSame)) {
            kept.append(text, copied, at - copied).append(L"&lt;");
            copied = at + 1;
        }
    }
    if (copied != 0) {
        text = kept.append(text, copied);
    }
}

// Room for a text that is put together part by part: before a part of `size` characters is appended
// with which `share` (above 0 to 1) of the whole is done, makes as much as the whole is likely to
// need. Fresh memory is the largest cost of a long list.
template <class Text>
void MakeRoomForAll(Text& text, std::size_t size, double share)
{
    const std::size_t needed = text.size() + size;
    if (text.capacity() < needed) {
        constexpr double kSpare = 1.1;
        const double likely = static_cast<double>(needed) / share * kSpare;
        text.reserve(std::max(needed, static_cast<std::size_t>(likely)));
    }
}

}  // namespace

struct ListRenderer::Templates {
    TemplatesPreprocessor page{L"document-panel-comments/template-page-item.htm"};
    TemplatesPreprocessor item{L"document-panel-comments/template-annot-item.htm"};
    TemplatesPreprocessor simpleItem{L"document-panel-comments/template-simple-annot-item.htm"};
    TemplatesPreprocessor tooltip{L"document-panel-comments/template-annot-tooltip.htm"};
};

ListRenderer::ListRenderer(BLDocument* document)
    : document_(document),
      captions_{LocalizedString(L"Page %1%"), LocalizedString(kTooltipSection, L"Date created"),
                LocalizedString(kTooltipSection, L"Date modified"), DateFormat()},
      newTooltipId_(TooltipIds()),
      templates_(std::make_unique<Templates>())
{
    PDFL::Library();  // without it rendering fails, instead of showing an empty list
}

ListRenderer::~ListRenderer() = default;

auto ListRenderer::KindOf(const PDFL::Annotation& annotation) -> const Kind&
{
    const Atom subtype = annotation.Subtype();
    auto known = kinds_.find(subtype);
    if (known == kinds_.end()) {
        known = kinds_.emplace(subtype, Kind{TypeName(subtype), ClassNameOf(subtype)}).first;
    }
    return known->second;
}

// Calls `render` with the index of each page, while the rendering is wanted, and the share of the
// document, above 0 to 1, that is done with it.
template <class Render>
void ListRenderer::ForEachPage(const Render& render) const
{
    const std::uint64_t failedBefore = FailedCallCount();
    std::int32_t count = 0;
    CallMethod<BLDocument::GetPageCount>(document_, &count);
    if (FailedCallCount() != failedBefore) {  // which is not a document without pages
        throw ServiceObjectException({kResultNotInitialized, L"Not initialized",
                                      "ListRenderer::ForEachPage",
                                      "src/ui-document-panel-comments/ListRenderer", __LINE__});
    }
    for (std::int32_t i = 0; i < count && wanted(); ++i) {
        render(static_cast<std::uint32_t>(i), (i + 1.0) / count);
    }
}

std::wstring ListRenderer::RenderResults()
{
    std::wstring html;
    std::size_t longest = 0;
    ForEachPage([&](std::uint32_t index, double share) {
        const std::size_t former = html.size();
        MakeRoomForAll(html, longest, share);
        AppendPageItem(index, html);
        longest = std::max(longest, html.size() - former);
    });
    if (html.empty()) {
        html = RenderNoItems();
    }
    return html;
}

std::string ListRenderer::RenderResultsUtf8()
{
    std::string html;
    ForEachPage([&](std::uint32_t index, double share) {
        page_.clear();
        AppendPageItem(index, page_);
        MakeRoomForAll(html, page_.size() + page_.size() / 4, share);
        AppendUtf8(html, page_);
    });
    if (html.empty()) {
        html = ToUtf8(RenderNoItems());
    }
    return html;
}

std::wstring ListRenderer::RenderNoItems()
{
    std::wstring html = L"<p id=\"NoItemsMessage\" localize=\"\" __l_o_c_a_l_e__t_o_k_e_n__=\"";
    return html.append(kNoItems).append(L"\">").append(LocalizedString(kNoItems)).append(L"</p>");
}

std::wstring ListRenderer::RenderPageItem(std::uint32_t pageIndex)
{
    std::wstring html;
    AppendPageItem(pageIndex, html);
    return html;
}

void ListRenderer::AppendPageItem(std::uint32_t pageIndex, std::wstring& target)
{
    const PDFL::Page page = DeliveredPage(document_, pageIndex);
    items_.clear();
    PageListing listing(page, pageIndex);
    while (wanted() && listing.Next(name_)) {
        AppendAnnotItem(name_, listing.Annotation(), items_);
    }
    if (items_.empty()) {
        return;
    }
    const std::wstring index = DecimalText(pageIndex);
    const std::wstring caption =
        FormatTranslated(captions_.page, std::to_wstring(std::uint64_t{pageIndex} + 1));
    TemplatesPreprocessor& item = templates_->page;
    item.SetRule(L"PAGE_INDEX"sv, TemplateAction::kReplace, index);
    item.SetRule(L"PAGE_NAME"sv, TemplateAction::kReplace, caption);
    item.SetRule(L"PAGE_ITEMS"sv, TemplateAction::kReplace, items_);
    item.AppendTo(target);
}

std::wstring ListRenderer::RenderAnnotItem(const std::wstring& uniqueName,
                                           const PDFL::Annotation& annotation)
{
    std::wstring html;
    AppendAnnotItem(uniqueName, annotation, html);
    return html;
}

void ListRenderer::AppendAnnotItem(const std::wstring& uniqueName,
                                   const PDFL::Annotation& annotation, std::wstring& target)
{
    const Kind& kind = KindOf(annotation);
    annotation.ReadContents(text_);
    WriteWithBreaks(text_, contents_);
    newTooltipId_(tooltipId_);
    tooltip_.clear();
    AppendAnnotTooltip(kind, annotation, tooltipId_, tooltip_);

    // The name of the tooltip's id begins with that of the tooltip, and so comes before it.
    const bool simple = contents_.empty();
    TemplatesPreprocessor& item = simple ? templates_->simpleItem : templates_->item;
    item.SetRule(L"CLASS_NAME"sv, TemplateAction::kReplace, kind.className);
    item.SetRule(L"ANNOT_NAME"sv, TemplateAction::kReplace, kind.displayName);
    item.SetRule(L"ANNOT_UNIQUE_NAME"sv, TemplateAction::kReplace, uniqueName);
    if (!simple) {
        item.SetRule(L"ANNOT_CONTENTS"sv, TemplateAction::kReplace, contents_);
    }
    item.SetRule(L"ANNOT_TOOLTIP_ID"sv, TemplateAction::kReplace, tooltipId_);
    item.SetRule(L"ANNOT_TOOLTIP"sv, TemplateAction::kReplace, tooltip_);
    item.AppendTo(target);
}

std::wstring ListRenderer::RenderAnnotTooltip(const PDFL::Annotation& annotation,
                                              const std::wstring& tooltipId)
{
    std::wstring html;
    AppendAnnotTooltip(KindOf(annotation), annotation, tooltipId, html);
    return html;
}

void ListRenderer::AppendAnnotTooltip(const Kind& kind, const PDFL::Annotation& annotation,
                                      const std::wstring& tooltipId, std::wstring& target)
{
    annotation.ReadTitle(title_);
    annotation.ReadSubject(subject_);
    for (std::wstring* const value : {&title_, &subject_}) {
        if (value->empty()) {
            *value = kind.displayName;
        }
        KeepInTooltip(*value);
    }
    WriteAnnotDate(annotation.CreationDate(), captions_.dateFormat, created_);
    WriteAnnotDate(annotation.ModificationDate(), captions_.dateFormat, modified_);

    TemplatesPreprocessor& tooltip = templates_->tooltip;
    tooltip.SetRule(L"ANNOT_TOOLTIP_ID"sv, TemplateAction::kReplace, tooltipId);
    tooltip.SetRule(L"ANNOT_TITLE"sv, TemplateAction::kReplace, title_);
    tooltip.SetRule(L"ANNOT_SUBJECT"sv, TemplateAction::kReplace, subject_);
    SetDateRow(tooltip, kCreatedRow, captions_.created, created_);
    SetDateRow(tooltip, kModifiedRow, captions_.modified, modified_);
    tooltip.AppendTo(target);
}

std::wstring ListRenderer::ConvertContentsText(const PDFL::Annotation& annotation)
{
    std::wstring text;
    WriteWithBreaks(annotation.Contents(), text);
    return text;
}
