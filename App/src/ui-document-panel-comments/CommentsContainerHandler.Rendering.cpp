// Rendering: from the document to the HTML of the list. Nothing of the DOM is touched here, and
// nothing of the handler is used, so that all of it runs on the UI thread and on the worker alike.
#include "CommentsContainerHandler.h"

#include "DecimalText.h"
#include "GrowingText.h"
#include "PageListing.h"
#include "SubtypeTable.h"

#include "service-common/SingletonStaticData.h"
#include "service-common/WideText.h"
#include "ui-engine/LocalizedStrings.h"
#include "ui-engine/NarrowText.h"
#include "ui-engine/internal/TemplatesPreprocessor.h"

#include <boost/date_time/c_local_time_adjustor.hpp>
#include <boost/date_time/gregorian/gregorian_types.hpp>
#include <boost/date_time/posix_time/posix_time.hpp>
#include <boost/format.hpp>
#include <boost/uuid/random_generator.hpp>
#include <boost/uuid/uuid_io.hpp>

#include <algorithm>
#include <locale>
#include <memory>
#include <random>
#include <span>
#include <sstream>
#include <stdexcept>
#include <utility>
#include <vector>

namespace {

constexpr const wchar_t* kPageTemplate = L"document-panel-comments/template-page-item.htm";
constexpr const wchar_t* kItemTemplate = L"document-panel-comments/template-annot-item.htm";
constexpr const wchar_t* kSimpleItemTemplate =
    L"document-panel-comments/template-simple-annot-item.htm";
constexpr const wchar_t* kTooltipTemplate = L"document-panel-comments/template-annot-tooltip.htm";

constexpr const wchar_t* kTooltipSection = L"Coments annot info";
constexpr const wchar_t* kNoItems = L"There are no items to show";
constexpr const wchar_t* kDateFormat = L"%Y-%m-%d %H:%M:%S";

// A translated text with placeholders. One that is malformed shows itself rather than nothing.
template <class... Args>
std::wstring FormatTranslated(const std::wstring& text, const Args&... arguments)
{
    try {
        boost::wformat format(text, std::locale::classic());
        format.exceptions(boost::io::no_error_bits);
        (format % ... % arguments);
        return format.str();
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
        return {};
    }
}

// Local time of a date record. Fails with the standard out_of_range for fields that no calendar or
// clock shows.
boost::posix_time::ptime LocalTime(const _PDDateRec& date)
{
    using namespace boost::posix_time;
    if (date.hour > 23 || date.minute > 59 || date.second > 59) {
        throw std::out_of_range("time of day");
    }
    const boost::gregorian::date day(date.year, date.month, date.day);
    const ptime utc =
        ptime(day, time_duration(date.hour, date.minute, date.second)) - hours(date.utcOffsetHours);
    try {
        return boost::date_time::c_local_adjustor<ptime>::utc_to_local(utc);
    } catch (const std::exception&) {
        return ptime(boost::date_time::not_a_date_time);
    }
}

// Two digits of a number below 100.
void AppendTwoDigits(std::wstring& target, unsigned number)
{
    target.push_back(static_cast<wchar_t>(L'0' + number / 10));
    target.push_back(static_cast<wchar_t>(L'0' + number % 10));
}

// Writes a time by a format that consists of text and of the directives Y m d H M S only, exactly
// as the output facet does, which costs a tenth of the facet's time. False for any other format.
bool WriteNumericTime(const boost::posix_time::ptime& time, const std::wstring& format,
                      std::wstring& text)
{
    if (time.is_special()) {
        return false;
    }
    const auto day = time.date().year_month_day();
    const auto clock = time.time_of_day();
    for (std::size_t i = 0; i < format.size(); ++i) {
        if (format[i] != L'%') {
            text.push_back(format[i]);
            continue;
        }
        switch (i + 1 < format.size() ? format[++i] : L'\0') {
        case L'Y':
            AppendTwoDigits(text, day.year / 100u);
            AppendTwoDigits(text, day.year % 100u);
            break;
        case L'm':
            AppendTwoDigits(text, day.month);
            break;
        case L'd':
            AppendTwoDigits(text, day.day);
            break;
        case L'H':
            AppendTwoDigits(text, static_cast<unsigned>(clock.hours()));
            break;
        case L'M':
            AppendTwoDigits(text, static_cast<unsigned>(clock.minutes()));
            break;
        case L'S':
            AppendTwoDigits(text, static_cast<unsigned>(clock.seconds()));
            break;
        default:
            return false;
        }
    }
    return true;
}

void WriteTime(const boost::posix_time::ptime& time, const std::wstring& format, std::wstring& text)
{
    text.clear();
    if (WriteNumericTime(time, format, text)) {
        return;
    }
    std::wostringstream stream;
    // The locale owns the facet.
    stream.imbue(std::locale(stream.getloc(), new boost::posix_time::wtime_facet(format.c_str())));
    stream << time;
    text = stream.str();
}

// The rules of each template, one for each placeholder, in this order.
enum PageRule : std::size_t { kPageIndex, kPageName, kPageItems };
constexpr const wchar_t* kPagePlaceholders[] = {L"PAGE_INDEX", L"PAGE_NAME", L"PAGE_ITEMS"};

// The name of the tooltip's id begins with that of the tooltip, and so comes before it. Items
// without contents have no place for them.
enum ItemRule : std::size_t {
    kClassName,
    kAnnotName,
    kUniqueName,
    kContents,
    kItemTooltipId,
    kItemTooltip
};
constexpr const wchar_t* kItemPlaceholders[] = {L"CLASS_NAME",        L"ANNOT_NAME",
                                                L"ANNOT_UNIQUE_NAME", L"ANNOT_CONTENTS",
                                                L"ANNOT_TOOLTIP_ID",  L"ANNOT_TOOLTIP"};

enum TooltipRule : std::size_t { kTooltipId, kTitle, kSubject, kCreatedRow, kModifiedRow = 6 };
// Within the rules of a date's row.
enum DateRule : std::size_t { kDisplay, kLabel, kDate };
constexpr const wchar_t* kTooltipPlaceholders[] = {
    L"ANNOT_TOOLTIP_ID",
    L"ANNOT_TITLE",
    L"ANNOT_SUBJECT",
    L"DATE_CREATED_DISPLAY_ATTRIBUTE",
    L"DATE_CREATED_KEY",
    L"DATE_CREATED_VALUE",
    L"DATE_MODIFIED_DISPLAY_ATTRIBUTE",
    L"DATE_MODIFIED_KEY",
    L"DATE_MODIFIED_VALUE",
};

void AddRules(TemplatesPreprocessor& preprocessor, std::span<const wchar_t* const> placeholders)
{
    for (const wchar_t* placeholder : placeholders) {
        preprocessor.AddRule(placeholder, TemplateAction::kReplace, {});
    }
}

// Shows a row of the tooltip's dates with its label, or hides it when there is no date.
void ChangeDateRules(TemplatesPreprocessor& preprocessor, std::size_t row,
                     const std::wstring& label, const std::wstring& date)
{
    const bool shown = !date.empty();
    const auto action = shown ? TemplateAction::kReplace : TemplateAction::kErase;
    preprocessor.ChangeRule(row + kDisplay, TemplateAction::kReplace, shown ? L"block" : L"none");
    preprocessor.ChangeRule(row + kLabel, action, label);
    preprocessor.ChangeRule(row + kDate, action, date);
}

std::wstring_view ClassNameOf(Atom subtype)
{
    const SubtypeEntry* const entry = FindSubtype(subtype);
    return entry == nullptr ? std::wstring_view() : std::wstring_view(entry->className);
}

std::wstring TypeName(Atom subtype)
{
    if (const SubtypeEntry* entry = FindSubtype(subtype)) {
        return LocalizedString(entry->displayName);
    }
    const char* const ownName = AtomService::NameOf(subtype);
    return ownName == nullptr ? std::wstring() : LocalizedString(FromNarrow(ownName));
}

// The page, or an empty one when the document cannot deliver it.
PDFL::Page DeliveredPage(BLDocument* document, std::uint32_t pageIndex)
{
    PDFL::Page page;
    try {
        CallMethod<BLDocument::AcquirePage>(document, pageIndex, page.Receive());
    } catch (const ServiceObjectException&) {
        page.Reset();  // gone meanwhile: skipped
    }
    return page;
}

// The date as FormatAnnotDate gives it.
void WriteAnnotDate(const _PDDateRec& date, const std::wstring& format, std::wstring& text)
{
    text.clear();
    if (date.year == 0) {
        return;
    }
    try {
        WriteTime(LocalTime(date), format, text);
    } catch (const std::exception&) {
        text.clear();  // a field out of range hides the row
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
    for (std::size_t at = text.find(L'<'); at != text.npos; at = text.find(L'<', at + 1)) {
        const std::wstring_view rest = std::wstring_view(text).substr(at, kEnd.size());
        if (std::equal(rest.begin(), rest.end(), kEnd.begin(), kEnd.end(), isSame)) {
            text.replace(at, 1, L"&lt;");
        }
    }
}

// Calls `render` with the index of each page, while the rendering is wanted, and the share of the
// document, above 0 to 1, that is done with it.
template <class Render>
void ForEachPage(const CommentsContainerHandler::Rendering& rendering, const Render& render)
{
    std::int32_t count = 0;
    CallMethod<BLDocument::GetPageCount>(rendering.document, &count);
    for (std::int32_t i = 0; i < count && rendering.wanted(); ++i) {
        render(static_cast<std::uint32_t>(i), (i + 1.0) / count);
    }
}

}  // namespace

struct CommentsContainerHandler::Rendering::Templates {
    Templates()
    {
        AddRules(page, kPagePlaceholders);
        AddRules(item, kItemPlaceholders);
        AddRules(simpleItem, kItemPlaceholders);
        AddRules(tooltip, kTooltipPlaceholders);
    }

    TemplatesPreprocessor page{kPageTemplate};
    TemplatesPreprocessor item{kItemTemplate};
    TemplatesPreprocessor simpleItem{kSimpleItemTemplate};
    TemplatesPreprocessor tooltip{kTooltipTemplate};
};

CommentsContainerHandler::Rendering::Rendering(BLDocument* listed)
    : document(listed),
      pageCaption(LocalizedString(L"Page %1%")),
      createdLabel(LocalizedString(kTooltipSection, L"Date created")),
      modifiedLabel(LocalizedString(kTooltipSection, L"Date modified")),
      dateFormat(DateFormat()),
      newTooltipId(TooltipIds()),
      templates(std::make_unique<Templates>())
{
    PDFL::Library();  // without it there is no list, rather than one of no items
}

CommentsContainerHandler::Rendering::~Rendering() = default;

auto CommentsContainerHandler::Rendering::KindOf(const PDFL::Annotation& annotation) -> const Kind&
{
    const Atom subtype = annotation.Subtype();
    auto known = kinds.find(subtype);
    if (known == kinds.end()) {
        known = kinds.emplace(subtype, Kind{TypeName(subtype), ClassNameOf(subtype)}).first;
    }
    return known->second;
}

std::wstring CommentsContainerHandler::RenderResults(Rendering& rendering)
{
    std::wstring html;
    std::size_t longest = 0;
    ForEachPage(rendering, [&](std::uint32_t index, double share) {
        const std::size_t former = html.size();
        MakeRoomForAll(html, longest, share);
        AppendPageItem(rendering, index, html);
        longest = std::max(longest, html.size() - former);
    });
    if (html.empty()) {
        html = RenderNoItems();
    }
    return html;
}

std::string CommentsContainerHandler::RenderResultsUtf8(Rendering& rendering)
{
    std::string html;
    std::wstring& page = rendering.scratch.page;
    ForEachPage(rendering, [&](std::uint32_t index, double share) {
        page.clear();
        AppendPageItem(rendering, index, page);
        MakeRoomForAll(html, page.size() + page.size() / 4, share);
        AppendUtf8(html, page);
    });
    if (html.empty()) {
        AppendUtf8(html, RenderNoItems());
    }
    return html;
}

std::wstring CommentsContainerHandler::RenderNoItems()
{
    return (boost::wformat(L"<p id=\"NoItemsMessage\" localize=\"\" "
                           L"__l_o_c_a_l_e__t_o_k_e_n__=\"%1%\">%2%</p>") %
            kNoItems % LocalizedString(kNoItems))
        .str();
}

std::wstring CommentsContainerHandler::RenderPageItem(Rendering& rendering, std::uint32_t pageIndex)
{
    std::wstring html;
    AppendPageItem(rendering, pageIndex, html);
    return html;
}

void CommentsContainerHandler::AppendPageItem(Rendering& rendering, std::uint32_t pageIndex,
                                              std::wstring& target)
{
    const PDFL::Page page = DeliveredPage(rendering.document, pageIndex);
    std::wstring& items = rendering.scratch.items;
    std::wstring& name = rendering.scratch.name;
    items.clear();
    PageListing listing(page, pageIndex);
    while (rendering.wanted() && listing.Next(name)) {
        AppendAnnotItem(rendering, name, listing.Annotation(), items);
    }
    if (items.empty()) {
        return;
    }
    const std::wstring index = DecimalText(pageIndex);
    const std::wstring caption =
        FormatTranslated(rendering.pageCaption, std::uint64_t{pageIndex} + 1);
    TemplatesPreprocessor& preprocessor = rendering.templates->page;
    preprocessor.ChangeRule(kPageIndex, TemplateAction::kReplace, index);
    preprocessor.ChangeRule(kPageName, TemplateAction::kReplace, caption);
    preprocessor.ChangeRule(kPageItems, TemplateAction::kReplace, items);
    preprocessor.AppendTo(target);
}

std::wstring CommentsContainerHandler::RenderAnnotItem(Rendering& rendering,
                                                       std::uint32_t pageIndex,
                                                       const PDFL::Annotation& annotation)
{
    return RenderAnnotItem(
        rendering, MakeAnnotUniqueName(rendering.document, pageIndex, annotation), annotation);
}

std::wstring CommentsContainerHandler::RenderAnnotItem(Rendering& rendering,
                                                       const std::wstring& uniqueName,
                                                       const PDFL::Annotation& annotation)
{
    std::wstring html;
    AppendAnnotItem(rendering, uniqueName, annotation, html);
    return html;
}

void CommentsContainerHandler::AppendAnnotItem(Rendering& rendering, const std::wstring& uniqueName,
                                               const PDFL::Annotation& annotation,
                                               std::wstring& target)
{
    auto& [page, items, name, text, contents, title, subject, created, modified, tooltipId,
           tooltip] = rendering.scratch;
    const Rendering::Kind& kind = rendering.KindOf(annotation);
    annotation.ReadContents(text);
    WriteWithBreaks(text, contents);
    rendering.newTooltipId(tooltipId);
    tooltip.clear();
    AppendAnnotTooltip(rendering, kind, annotation, tooltipId, tooltip);

    TemplatesPreprocessor& preprocessor =
        contents.empty() ? rendering.templates->simpleItem : rendering.templates->item;
    preprocessor.ChangeRule(kClassName, TemplateAction::kReplace, kind.className);
    preprocessor.ChangeRule(kAnnotName, TemplateAction::kReplace, kind.displayName);
    preprocessor.ChangeRule(kUniqueName, TemplateAction::kReplace, uniqueName);
    preprocessor.ChangeRule(kContents, TemplateAction::kReplace, contents);
    preprocessor.ChangeRule(kItemTooltipId, TemplateAction::kReplace, tooltipId);
    preprocessor.ChangeRule(kItemTooltip, TemplateAction::kReplace, tooltip);
    preprocessor.AppendTo(target);
}

std::wstring CommentsContainerHandler::RenderAnnotTooltip(Rendering& rendering,
                                                          const PDFL::Annotation& annotation,
                                                          const std::wstring& tooltipId)
{
    std::wstring html;
    AppendAnnotTooltip(rendering, rendering.KindOf(annotation), annotation, tooltipId, html);
    return html;
}

void CommentsContainerHandler::AppendAnnotTooltip(Rendering& rendering, const Rendering::Kind& kind,
                                                  const PDFL::Annotation& annotation,
                                                  const std::wstring& tooltipId,
                                                  std::wstring& target)
{
    auto& [page, items, name, text, contents, title, subject, created, modified, id, tooltip] =
        rendering.scratch;
    annotation.ReadTitle(title);
    annotation.ReadSubject(subject);
    for (std::wstring* const value : {&title, &subject}) {
        if (value->empty()) {
            *value = kind.displayName;
        }
        KeepInTooltip(*value);
    }
    WriteAnnotDate(annotation.CreationDate(), rendering.dateFormat, created);
    WriteAnnotDate(annotation.ModificationDate(), rendering.dateFormat, modified);

    TemplatesPreprocessor& preprocessor = rendering.templates->tooltip;
    preprocessor.ChangeRule(kTooltipId, TemplateAction::kReplace, tooltipId);
    preprocessor.ChangeRule(kTitle, TemplateAction::kReplace, title);
    preprocessor.ChangeRule(kSubject, TemplateAction::kReplace, subject);
    ChangeDateRules(preprocessor, kCreatedRow, rendering.createdLabel, created);
    ChangeDateRules(preprocessor, kModifiedRow, rendering.modifiedLabel, modified);
    preprocessor.AppendTo(target);
}

const std::wstring& CommentsContainerHandler::GetAnnotTypeName(Rendering& rendering,
                                                               const PDFL::Annotation& annotation)
{
    return rendering.KindOf(annotation).displayName;
}

std::wstring CommentsContainerHandler::GetAnnotClassName(const PDFL::Annotation& annotation)
{
    return std::wstring(ClassNameOf(annotation.Subtype()));
}

std::wstring CommentsContainerHandler::FormatAnnotDate(const _PDDateRec& date,
                                                       const std::wstring& format)
{
    std::wstring text;
    WriteAnnotDate(date, format, text);
    return text;
}

std::wstring CommentsContainerHandler::ConvertContentsText(const PDFL::Annotation& annotation)
{
    std::wstring text;
    WriteWithBreaks(annotation.Contents(), text);
    return text;
}
