// Rendering: from the document to the HTML of the list. Nothing of the DOM is touched here, and
// nothing of the handler is used, so that all of it runs on the UI thread and on the worker alike.
#include "CommentsContainerHandler.h"

#include "DecimalText.h"
#include "GrowingText.h"
#include "MarkupBalance.h"
#include "SubtypeTable.h"

#include "service-common/SingletonStaticData.h"
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
#include <optional>
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
        boost::wformat format(text);
        format.exceptions(boost::io::no_error_bits);
        (format % ... % arguments);
        return format.str();
    } catch (const boost::io::format_error&) {
        return text;
    }
}

// A source of random UUIDs for one rendering.
std::function<void(std::wstring&)> TooltipIds()
{
    constexpr std::size_t kTextLength = 36;
    return
        [generator = std::make_shared<boost::uuids::random_generator_mt19937>()](std::wstring& id) {
            id.resize(kTextLength);
            boost::uuids::to_chars((*generator)(), id.begin());
        };
}

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

void AppendPadded(std::wstring& target, std::uint32_t number, std::uint32_t width)
{
    std::uint32_t limit = 10;
    for (std::uint32_t digits = 1; digits < width; ++digits, limit *= 10) {
        if (number < limit) {
            target.append(width - digits, L'0');
            break;
        }
    }
    AppendDecimal(target, number);
}

// Writes a time by a format that consists of text and of the directives Y m d H M S only, exactly
// as the output facet does, which costs a tenth of the facet's time. Empty for any other format.
std::optional<std::wstring> WriteNumericTime(const boost::posix_time::ptime& time,
                                             const std::wstring& format)
{
    if (time.is_special()) {
        return std::nullopt;
    }
    const auto day = time.date().year_month_day();
    const auto clock = time.time_of_day();
    std::wstring text;
    text.reserve(format.size() + 8);
    for (std::size_t i = 0; i < format.size(); ++i) {
        if (format[i] != L'%') {
            text.push_back(format[i]);
            continue;
        }
        switch (i + 1 < format.size() ? format[++i] : L'\0') {
        case L'Y':
            AppendPadded(text, day.year, 4);
            break;
        case L'm':
            AppendPadded(text, day.month, 2);
            break;
        case L'd':
            AppendPadded(text, day.day, 2);
            break;
        case L'H':
            AppendPadded(text, static_cast<std::uint32_t>(clock.hours()), 2);
            break;
        case L'M':
            AppendPadded(text, static_cast<std::uint32_t>(clock.minutes()), 2);
            break;
        case L'S':
            AppendPadded(text, static_cast<std::uint32_t>(clock.seconds()), 2);
            break;
        default:
            return std::nullopt;
        }
    }
    return text;
}

std::wstring WriteTime(const boost::posix_time::ptime& time, const std::wstring& format)
{
    if (auto text = WriteNumericTime(time, format)) {
        return *std::move(text);
    }
    std::wostringstream stream;
    // The locale owns the facet.
    stream.imbue(std::locale(stream.getloc(), new boost::posix_time::wtime_facet(format.c_str())));
    stream << time;
    return stream.str();
}

// Rules that show a row of the tooltip's dates with its label, or hide it when there is no date.
struct DateRow {
    const wchar_t* display;
    const wchar_t* key;
    const wchar_t* value;
};
constexpr DateRow kCreatedRow = {L"DATE_CREATED_DISPLAY_ATTRIBUTE", L"DATE_CREATED_KEY",
                                 L"DATE_CREATED_VALUE"};
constexpr DateRow kModifiedRow = {L"DATE_MODIFIED_DISPLAY_ATTRIBUTE", L"DATE_MODIFIED_KEY",
                                  L"DATE_MODIFIED_VALUE"};

void AddDateRules(TemplatesPreprocessor& preprocessor, const DateRow& row,
                  const std::wstring& label, const std::wstring& date)
{
    const bool shown = !date.empty();
    const auto action = shown ? TemplateAction::kReplace : TemplateAction::kErase;
    preprocessor.AddRule(row.display, TemplateAction::kReplace, shown ? L"block" : L"none");
    preprocessor.AddRule(row.key, action, label);
    preprocessor.AddRule(row.value, action, date);
}

std::wstring_view ClassNameOf(const PDFL::Annotation& annotation)
{
    const SubtypeEntry* const entry = FindSubtype(annotation.Subtype());
    return entry == nullptr ? std::wstring_view() : std::wstring_view(entry->className);
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

}  // namespace

CommentsContainerHandler::Rendering::Rendering(BLDocument* listed)
    : document(listed),
      pageCaption(LocalizedString(L"Page %1%")),
      createdLabel(LocalizedString(kTooltipSection, L"Date created")),
      modifiedLabel(LocalizedString(kTooltipSection, L"Date modified")),
      dateFormat(DateFormat()),
      newTooltipId(TooltipIds())
{
}

void CommentsContainerHandler::RenderResults(Rendering& rendering, const PageWriter& write)
{
    std::int32_t pageCount = 0;
    CallMethod<BLDocument::GetPageCount>(rendering.document, &pageCount);
    std::wstring& page = rendering.scratch.page;
    bool empty = true;
    for (std::int32_t i = 0; i < pageCount && rendering.wanted(); ++i) {
        page.clear();
        AppendPageItem(rendering, static_cast<std::uint32_t>(i), page);
        if (!page.empty()) {
            write(page, (static_cast<double>(i) + 1) / pageCount);
            empty = false;
        }
    }
    if (empty) {
        write(RenderNoItems(), 1);
    }
}

std::wstring CommentsContainerHandler::RenderResults(Rendering& rendering)
{
    std::wstring html;
    RenderResults(rendering, [&](std::wstring_view page, double share) {
        MakeRoomForAll(html, page.size(), share);
        html += page;
    });
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
    const std::uint32_t count = page.AnnotationCount();
    std::wstring& items = rendering.scratch.items;
    std::wstring& name = rendering.scratch.name;
    items.clear();
    for (std::uint32_t position = 0; position < count && rendering.wanted(); ++position) {
        const auto annotation = PDFL::Annotation::At(page, position);
        if (!annotation || !annotation.IsListed()) {
            continue;
        }
        try {
            MakeAnnotUniqueName(rendering.document, pageIndex, annotation, name);
        } catch (const ServiceObjectException&) {
            continue;  // removed since the page was acquired: its own event follows
        }
        AppendAnnotItem(rendering, name, annotation, items);
    }
    if (items.empty()) {
        return;
    }
    const std::wstring index = DecimalText(pageIndex);
    const std::wstring caption =
        FormatTranslated(rendering.pageCaption, std::uint64_t{pageIndex} + 1);
    TemplatesPreprocessor preprocessor(kPageTemplate);
    preprocessor.AddRule(L"PAGE_INDEX", TemplateAction::kReplace, index);
    preprocessor.AddRule(L"PAGE_NAME", TemplateAction::kReplace, caption);
    preprocessor.AddRule(L"PAGE_ITEMS", TemplateAction::kReplace, items);
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
    auto& [page, items, name, contents, title, subject, tooltipId, tooltip] = rendering.scratch;
    const std::wstring& displayName = GetAnnotTypeName(rendering, annotation);
    ConvertContentsText(annotation, contents);
    rendering.newTooltipId(tooltipId);
    tooltip.clear();
    AppendAnnotTooltip(rendering, annotation, tooltipId, tooltip);

    rendering.balanced = rendering.balanced && IsBalancedMarkup(displayName) &&
                         IsBalancedMarkup(contents) && IsBalancedMarkup(title) &&
                         IsBalancedMarkup(subject);

    const bool simple = contents.empty();
    TemplatesPreprocessor preprocessor(simple ? kSimpleItemTemplate : kItemTemplate);
    preprocessor.AddRule(L"CLASS_NAME", TemplateAction::kReplace, ClassNameOf(annotation));
    preprocessor.AddRule(L"ANNOT_NAME", TemplateAction::kReplace, displayName);
    preprocessor.AddRule(L"ANNOT_UNIQUE_NAME", TemplateAction::kReplace, uniqueName);
    if (!simple) {
        preprocessor.AddRule(L"ANNOT_CONTENTS", TemplateAction::kReplace, contents);
    }
    // Before ANNOT_TOOLTIP, which matches the beginning of this placeholder too.
    preprocessor.AddRule(L"ANNOT_TOOLTIP_ID", TemplateAction::kReplace, tooltipId);
    preprocessor.AddRule(L"ANNOT_TOOLTIP", TemplateAction::kReplace, tooltip);
    preprocessor.AppendTo(target);
}

std::wstring CommentsContainerHandler::RenderAnnotTooltip(Rendering& rendering,
                                                          const PDFL::Annotation& annotation,
                                                          const std::wstring& tooltipId)
{
    std::wstring html;
    AppendAnnotTooltip(rendering, annotation, tooltipId, html);
    return html;
}

void CommentsContainerHandler::AppendAnnotTooltip(Rendering& rendering,
                                                  const PDFL::Annotation& annotation,
                                                  const std::wstring& tooltipId,
                                                  std::wstring& target)
{
    auto& [page, items, name, contents, title, subject, id, tooltip] = rendering.scratch;
    annotation.ReadTitle(title);
    annotation.ReadSubject(subject);
    const std::wstring& displayName = GetAnnotTypeName(rendering, annotation);
    const std::wstring created = FormatAnnotDate(annotation.CreationDate(), rendering.dateFormat);
    const std::wstring modified =
        FormatAnnotDate(annotation.ModificationDate(), rendering.dateFormat);

    TemplatesPreprocessor preprocessor(kTooltipTemplate);
    preprocessor.AddRule(L"ANNOT_TOOLTIP_ID", TemplateAction::kReplace, tooltipId);
    preprocessor.AddRule(L"ANNOT_TITLE", TemplateAction::kReplace,
                         title.empty() ? displayName : title);
    preprocessor.AddRule(L"ANNOT_SUBJECT", TemplateAction::kReplace,
                         subject.empty() ? displayName : subject);
    AddDateRules(preprocessor, kCreatedRow, rendering.createdLabel, created);
    AddDateRules(preprocessor, kModifiedRow, rendering.modifiedLabel, modified);
    preprocessor.AppendTo(target);
}

const std::wstring& CommentsContainerHandler::GetAnnotTypeName(Rendering& rendering,
                                                               const PDFL::Annotation& annotation)
{
    const Atom subtype = annotation.Subtype();
    const auto known = rendering.displayNames.find(subtype);
    if (known != rendering.displayNames.end()) {
        return known->second;
    }
    std::wstring name;
    if (const SubtypeEntry* entry = FindSubtype(subtype)) {
        name = LocalizedString(entry->displayName);
    } else if (const char* ownName = AtomService::NameOf(subtype)) {
        name = LocalizedString(FromNarrow(ownName));
    }
    return rendering.displayNames.emplace(subtype, std::move(name)).first->second;
}

std::wstring CommentsContainerHandler::GetAnnotClassName(const PDFL::Annotation& annotation)
{
    return std::wstring(ClassNameOf(annotation));
}

std::wstring CommentsContainerHandler::FormatAnnotDate(const _PDDateRec& date,
                                                       const std::wstring& format)
{
    if (date.year == 0) {
        return {};
    }
    try {
        return WriteTime(LocalTime(date), format);
    } catch (const std::exception&) {
        return {};  // a field out of range hides the row
    }
}

std::wstring CommentsContainerHandler::ConvertContentsText(const PDFL::Annotation& annotation)
{
    std::wstring text;
    ConvertContentsText(annotation, text);
    return text;
}

void CommentsContainerHandler::ConvertContentsText(const PDFL::Annotation& annotation,
                                                   std::wstring& text)
{
    constexpr std::wstring_view kBreak = L"<br/>";
    annotation.ReadContents(text);
    const auto isBreak = [](wchar_t character) { return character == L'\r' || character == L'\n'; };
    const auto first = std::find_if(text.begin(), text.end(), isBreak);
    if (first == text.end()) {
        return;
    }
    const std::wstring rest(first, text.end());
    text.erase(first, text.end());
    for (auto at = rest.begin(); at != rest.end();) {
        text.append(kBreak);
        const bool pair = *at == L'\r' && at + 1 != rest.end() && at[1] == L'\n';
        const auto begin = at + (pair ? 2 : 1);
        at = std::find_if(begin, rest.end(), isBreak);
        text.append(begin, at);
    }
}
