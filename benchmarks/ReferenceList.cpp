#include "ReferenceList.h"

#include "AnnotDate.h"
#include "DecimalText.h"

#include "service-common/ServiceProvider.h"
#include "service-common/WideText.h"
#include "ui-engine/UIEngine.SO.h"
#include "ui-engine/internal/TemplatesPreprocessor.h"

#include <boost/format.hpp>

#include <algorithm>

namespace {

std::wstring TemplateText(const wchar_t* path)
{
    const auto engine = SP::QueryServiceObject<UIEngine>();
    BasicServiceObjectPtr<UIResources> resources;
    CallMethod<UIEngine::GetResources>(engine.Get(), resources.Receive());
    BasicServiceObjectPtr<UIResource> resource;
    CallMethod<UIResources::GetResource>(resources.Get(), ToUtf16(path).c_str(),
                                         resource.Receive());
    const std::uint8_t* data = nullptr;
    std::uint32_t size = 0;
    CallMethod<UIResource::GetData>(resource.Get(), &data, &size);
    return details::UTF16_Bom_Strategy::Decode(data, size);
}

}  // namespace

ReferenceList::ReferenceList(ListRenderer& renderer)
    : page_(Split(L"document-panel-comments/template-page-item.htm",
                  {L"PAGE_INDEX", L"PAGE_NAME", L"PAGE_ITEMS"})),
      item_(Split(L"document-panel-comments/template-annot-item.htm",
                  {L"CLASS_NAME", L"ANNOT_UNIQUE_NAME", L"ANNOT_TOOLTIP_ID", L"ANNOT_NAME",
                   L"ANNOT_CONTENTS", L"ANNOT_TOOLTIP"})),
      simpleItem_(Split(L"document-panel-comments/template-simple-annot-item.htm",
                        {L"CLASS_NAME", L"ANNOT_UNIQUE_NAME", L"ANNOT_TOOLTIP_ID", L"ANNOT_NAME",
                         L"ANNOT_CONTENTS", L"ANNOT_TOOLTIP"})),
      tooltip_(
          Split(L"document-panel-comments/template-annot-tooltip.htm",
                {L"ANNOT_TOOLTIP_ID", L"ANNOT_SUBJECT", L"ANNOT_TITLE",
                 L"DATE_CREATED_DISPLAY_ATTRIBUTE", L"DATE_CREATED_KEY", L"DATE_CREATED_VALUE",
                 L"DATE_MODIFIED_DISPLAY_ATTRIBUTE", L"DATE_MODIFIED_KEY", L"DATE_MODIFIED_VALUE"}))
{
    const std::wstring id(36, L'0');
    const ListRenderer::Captions& captions = renderer.UserCaptions();
    std::int32_t pageCount = 0;
    CallMethod<BLDocument::GetPageCount>(renderer.Document(), &pageCount);
    for (std::uint32_t index = 0; index < static_cast<std::uint32_t>(pageCount); ++index) {
        PDFL::Page record;
        CallMethod<BLDocument::AcquirePage>(renderer.Document(), index, record.Receive());
        Page page;
        page.values = {DecimalText(index), (boost::wformat(captions.page) % (index + 1)).str()};
        for (std::uint32_t position = 0; position < record.AnnotationCount(); ++position) {
            const auto annotation = PDFL::Annotation::At(record, position);
            if (!annotation.IsListed()) {
                continue;
            }
            const std::wstring contents = ListRenderer::ConvertContentsText(annotation);
            const std::wstring name = renderer.KindOf(annotation).displayName;
            const auto orName = [&](const std::wstring& text) {
                return text.empty() ? name : text;
            };
            std::wstring created;
            WriteAnnotDate(annotation.CreationDate(), captions.dateFormat, created);
            std::wstring modified;
            WriteAnnotDate(annotation.ModificationDate(), captions.dateFormat, modified);
            const auto display = [](const std::wstring& date) {
                return date.empty() ? L"none" : L"block";
            };
            const auto label = [](const std::wstring& date, const std::wstring& text) {
                return date.empty() ? std::wstring() : text;
            };
            page.items.push_back(
                {contents.empty(),
                 {std::wstring(renderer.KindOf(annotation).className),
                  DecimalText(index) + L"_" + DecimalText(position),
                  id,
                  name,
                  contents,
                  {}},
                 {id, orName(annotation.Subject()), orName(annotation.Title()), display(created),
                  label(created, captions.created), created, display(modified),
                  label(modified, captions.modified), modified}});
        }
        if (!page.items.empty()) {
            pages_.push_back(std::move(page));
        }
    }
    size_ = Build().size();
}

ReferenceList::Pieces ReferenceList::Split(const wchar_t* path,
                                           const std::vector<const wchar_t*>& placeholders)
{
    const std::wstring text = TemplateText(path);
    Pieces pieces;
    for (std::size_t cursor = 0;;) {
        std::size_t start = text.size();
        int value = -1;
        for (std::size_t i = 0; i < placeholders.size(); ++i) {
            const std::size_t at = text.find(placeholders[i], cursor);
            if (at < start) {
                start = at;
                value = static_cast<int>(i);
            }
        }
        pieces.push_back({text.substr(cursor, start - cursor), value});
        if (value < 0) {
            return pieces;
        }
        cursor = start + std::wcslen(placeholders[static_cast<std::size_t>(value)]);
    }
}

void ReferenceList::Append(std::wstring& target, const Pieces& pieces, const Values& values)
{
    for (const Piece& piece : pieces) {
        target.append(piece.literal);
        if (piece.value >= 0) {
            target.append(values[static_cast<std::size_t>(piece.value)]);
        }
    }
}

void ReferenceList::AppendItem(std::wstring& target, const Item& item) const
{
    constexpr int kTooltip = 5;
    for (const Piece& piece : item.simple ? simpleItem_ : item_) {
        target.append(piece.literal);
        if (piece.value == kTooltip) {
            Append(target, tooltip_, item.tooltip);
        } else if (piece.value >= 0) {
            target.append(item.values[static_cast<std::size_t>(piece.value)]);
        }
    }
}

std::wstring ReferenceList::Build() const
{
    std::wstring list;
    list.reserve(size_);
    for (const Page& page : pages_) {
        for (const Piece& piece : page_) {
            list.append(piece.literal);
            if (piece.value == 2) {
                for (const Item& item : page.items) {
                    AppendItem(list, item);
                }
            } else if (piece.value >= 0) {
                list.append(page.values[static_cast<std::size_t>(piece.value)]);
            }
        }
    }
    return list;
}
