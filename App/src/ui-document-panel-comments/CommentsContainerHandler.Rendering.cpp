// Rendering: from the document to the HTML of the list. Nothing of the DOM is touched here, and
// nothing of the handler is used, so that all of it runs on the UI thread and on the worker alike.
#include "CommentsContainerHandler.h"

#include "DecimalText.h"
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
std::function<std::wstring()> TooltipIds()
{
    return [generator = std::make_shared<boost::uuids::random_generator_mt19937>()] {
        return boost::uuids::to_wstring((*generator)());
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
    const ptime utc = ptime(day, time_duration(date.hour, date.minute, date.second)) -
                      hours(date.utcOffsetHours);
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
                  const std::wstring& label, std::wstring date)
{
    const bool shown = !date.empty();
    const auto action = shown ? TemplateAction::kReplace : TemplateAction::kErase;
    preprocessor.AddRule(row.display, TemplateAction::kReplace, shown ? L"block" : L"none");
    preprocessor.AddRule(row.key, action, shown ? label : std::wstring());
    preprocessor.AddRule(row.value, action, std::move(date));
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

void CommentsContainerHandler::RenderResults(Rendering& rendering,
                                             const std::function<void(std::wstring&&)>& write)
{
    std::int32_t pageCount = 0;
    CallMethod<BLDocument::GetPageCount>(rendering.document, &pageCount);
    bool empty = true;
    for (std::int32_t i = 0; i < pageCount && rendering.wanted(); ++i) {
        std::wstring page = RenderPageItem(rendering, static_cast<std::uint32_t>(i));
        if (!page.empty()) {
            write(std::move(page));
            empty = false;
        }
    }
    if (empty) {
        write(RenderNoItems());
    }
}

std::wstring CommentsContainerHandler::RenderResults(Rendering& rendering)
{
    std::vector<std::wstring> pages;
    std::size_t size = 0;
    RenderResults(rendering, [&](std::wstring&& page) {
        size += page.size();
        pages.push_back(std::move(page));
    });
    std::wstring html;
    html.reserve(size);
    for (const std::wstring& page : pages) {
        html += page;
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

std::wstring CommentsContainerHandler::RenderPageItem(Rendering& rendering,
                                                      std::uint32_t pageIndex)
{
    const PDFL::Page page = DeliveredPage(rendering.document, pageIndex);
    const std::uint32_t count = page.AnnotationCount();
    std::wstring items;
    for (std::uint32_t position = 0; position < count && rendering.wanted(); ++position) {
        const auto annotation = PDFL::Annotation::At(page, position);
        if (!annotation || !annotation.IsListed()) {
            continue;
        }
        std::wstring name;
        try {
            name = MakeAnnotUniqueName(rendering.document, pageIndex, annotation);
        } catch (const ServiceObjectException&) {
            continue;  // removed since the page was acquired: its own event follows
        }
        const bool first = items.empty();
        items += RenderAnnotItem(rendering, std::move(name), annotation);
        if (first) {
            items.reserve((items.size() + items.size() / 4) * (count - position));
        }
    }
    if (items.empty()) {
        return {};
    }
    TemplatesPreprocessor preprocessor(kPageTemplate);
    preprocessor.AddRule(L"PAGE_INDEX", TemplateAction::kReplace, DecimalText(pageIndex));
    preprocessor.AddRule(L"PAGE_NAME", TemplateAction::kReplace,
                         FormatTranslated(rendering.pageCaption, std::uint64_t{pageIndex} + 1));
    preprocessor.AddRule(L"PAGE_ITEMS", TemplateAction::kReplace, std::move(items));
    return preprocessor.Do();
}

std::wstring CommentsContainerHandler::RenderAnnotItem(Rendering& rendering,
                                                       std::uint32_t pageIndex,
                                                       const PDFL::Annotation& annotation)
{
    return RenderAnnotItem(
        rendering, MakeAnnotUniqueName(rendering.document, pageIndex, annotation), annotation);
}

std::wstring CommentsContainerHandler::RenderAnnotItem(Rendering& rendering,
                                                       std::wstring uniqueName,
                                                       const PDFL::Annotation& annotation)
{
    const std::wstring& displayName = GetAnnotTypeName(rendering, annotation);
    std::wstring contents = ConvertContentsText(annotation);
    std::wstring tooltipId = rendering.newTooltipId();
    std::wstring tooltip = RenderAnnotTooltip(rendering, annotation, tooltipId);

    const bool simple = contents.empty();
    TemplatesPreprocessor preprocessor(simple ? kSimpleItemTemplate : kItemTemplate);
    preprocessor.AddRule(L"CLASS_NAME", TemplateAction::kReplace, GetAnnotClassName(annotation));
    preprocessor.AddRule(L"ANNOT_NAME", TemplateAction::kReplace, displayName);
    preprocessor.AddRule(L"ANNOT_UNIQUE_NAME", TemplateAction::kReplace, std::move(uniqueName));
    if (!simple) {
        preprocessor.AddRule(L"ANNOT_CONTENTS", TemplateAction::kReplace, std::move(contents));
    }
    // Before ANNOT_TOOLTIP, which matches the beginning of this placeholder too.
    preprocessor.AddRule(L"ANNOT_TOOLTIP_ID", TemplateAction::kReplace, std::move(tooltipId));
    preprocessor.AddRule(L"ANNOT_TOOLTIP", TemplateAction::kReplace, std::move(tooltip));
    return preprocessor.Do();
}

std::wstring CommentsContainerHandler::RenderAnnotTooltip(Rendering& rendering,
                                                          const PDFL::Annotation& annotation,
                                                          const std::wstring& tooltipId)
{
    std::wstring title = annotation.Title();
    std::wstring subject = annotation.Subject();
    const std::wstring& displayName = GetAnnotTypeName(rendering, annotation);

    TemplatesPreprocessor preprocessor(kTooltipTemplate);
    preprocessor.AddRule(L"ANNOT_TOOLTIP_ID", TemplateAction::kReplace, tooltipId);
    preprocessor.AddRule(L"ANNOT_TITLE", TemplateAction::kReplace,
                         title.empty() ? displayName : std::move(title));
    preprocessor.AddRule(L"ANNOT_SUBJECT", TemplateAction::kReplace,
                         subject.empty() ? displayName : std::move(subject));
    AddDateRules(preprocessor, kCreatedRow, rendering.createdLabel,
                 FormatAnnotDate(annotation.CreationDate(), rendering.dateFormat));
    AddDateRules(preprocessor, kModifiedRow, rendering.modifiedLabel,
                 FormatAnnotDate(annotation.ModificationDate(), rendering.dateFormat));
    return preprocessor.Do();
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
    const SubtypeEntry* entry = FindSubtype(annotation.Subtype());
    return entry == nullptr ? std::wstring() : std::wstring(entry->className);
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
    const std::wstring contents = annotation.Contents();
    const auto isBreak = [](wchar_t character) { return character == L'\r' || character == L'\n'; };
    std::wstring text;
    text.reserve(contents.size() + 16);
    for (auto at = contents.begin(); at != contents.end();) {
        const auto end = std::find_if(at, contents.end(), isBreak);
        text.append(at, end);
        if ((at = end) == contents.end()) {
            break;
        }
        text.append(L"<br/>");
        const bool pair = *at == L'\r' && at + 1 != contents.end() && at[1] == L'\n';
        at += pair ? 2 : 1;
    }
    return text;
}
