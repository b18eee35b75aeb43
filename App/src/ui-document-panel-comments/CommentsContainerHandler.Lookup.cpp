// Lookup: the tie between a list item and its annotation is the item's name, "%1%_%2%" of page
// index and position; an item's page is that of the page item around it.
#include "CommentsContainerHandler.h"

#include "DecimalText.h"
#include "PageListing.h"

#include "ui-engine/NarrowText.h"

#include <string>

namespace {

constexpr const char* kCurrentItem = "div.results-container li[annot-name]:current";

constexpr bool IsDigit(wchar_t character)
{
    return character >= L'0' && character <= L'9';
}

// The number that the text begins with, as strtol reads it: white space, a sign, digits; 0 without
// digits. Taken as unsigned, so that a negative one becomes huge; what does not fit, too.
std::uint32_t LeadingNumber(std::wstring_view text)
{
    std::size_t at = text.find_first_not_of(L" \t\n\v\f\r");
    if (at == text.npos) {
        return 0;
    }
    const bool negative = text[at] == L'-';
    if (negative || text[at] == L'+') {
        ++at;
    }
    constexpr std::uint64_t kTooLarge = 0xFFFFFFFFu;
    std::uint64_t value = 0;
    for (; at < text.size() && IsDigit(text[at]) && value <= kTooLarge; ++at) {
        value = value * 10 + static_cast<std::uint64_t>(text[at] - L'0');
    }
    if (value > kTooLarge) {
        return static_cast<std::uint32_t>(kTooLarge);
    }
    const auto number = static_cast<std::uint32_t>(value);
    return negative ? 0u - number : number;
}

std::string ItemSelector(const std::string& name)
{
    return "li[annot-name=\"" + name + "\"]";
}

// The page at an index that is below the page count; fails otherwise.
PDFL::Page AcquirePageInRange(BLDocument* document, std::uint32_t pageIndex, bool& inRange)
{
    std::int32_t pageCount = 0;
    CallMethod<BLDocument::GetPageCount>(document, &pageCount);
    inRange = pageCount > 0 && pageIndex < static_cast<std::uint32_t>(pageCount);
    return inRange ? AcquirePage(document, pageIndex) : PDFL::Page();
}

}  // namespace

std::wstring CommentsContainerHandler::MakeAnnotUniqueName(BLDocument* document,
                                                           std::uint32_t pageIndex,
                                                           const PDFL::Annotation& annotation)
{
    std::wstring name;
    WriteUniqueName(pageIndex, GetAnnotIndex(document, pageIndex, annotation), name);
    return name;
}

std::uint32_t CommentsContainerHandler::GetAnnotIndex(BLDocument* document, std::uint32_t pageIndex,
                                                      const PDFL::Annotation& annotation)
{
    constexpr const char* kFunction = "CommentsContainerHandler::GetAnnotIndex";
    if (document == nullptr) {
        Fail(kResultNotInitialized, L"Not initialized", kFunction, __LINE__);
    }
    bool inRange = false;
    const PDFL::Page page = AcquirePageInRange(document, pageIndex, inRange);
    if (!inRange) {
        Fail(kResultOutOfRange, L"Page index out of range", kFunction, __LINE__);
    }
    const std::uint32_t count = page.AnnotationCount();
    for (std::uint32_t position = 0; position < count; ++position) {
        if (PDFL::Annotation::At(page, position).IsEqual(annotation)) {
            return position;
        }
    }
    Fail(kResultNotFound, L"Annot not found", kFunction, __LINE__);
}

PDFL::Annotation CommentsContainerHandler::FindAnnot(BLDocument* document, std::uint32_t pageIndex,
                                                     std::wstring_view indexText)
{
    constexpr const char* kFunction = "CommentsContainerHandler::FindAnnot";
    if (document == nullptr) {
        Fail(kResultNotInitialized, L"Not initialized", kFunction, __LINE__);
    }
    bool inRange = false;
    const PDFL::Page page = AcquirePageInRange(document, pageIndex, inRange);
    if (!inRange) {
        Fail(kResultOutOfRange, L"Page index out of range", kFunction, __LINE__);
    }
    const std::uint32_t position = LeadingNumber(indexText);
    if (position >= page.AnnotationCount()) {
        Fail(kResultOutOfRange, L"Annot index out of range", kFunction, __LINE__);
    }
    return PDFL::Annotation::At(page, position);
}

std::uint32_t CommentsContainerHandler::GetPageIndex() const
{
    constexpr const char* kFunction = "CommentsContainerHandler::GetPageIndex";
    const ElementReference item = CurrentItem();
    if (!item) {
        Fail(kResultNotInitialized, L"Not initialized", kFunction, __LINE__);
    }
    const ElementReference page = item.Enclosing(":root li[page-index]");
    if (!page) {
        Fail(kResultNotInitialized, L"Not initialized", kFunction, __LINE__);
    }
    const std::wstring text = page.Attribute("page-index");
    if (text.empty()) {
        Fail(kResultNotInitialized, L"Not initialized", kFunction, __LINE__);
    }
    return LeadingNumber(text);
}

PDFL::Annotation CommentsContainerHandler::GetCurrentAnnot() const
{
    constexpr const char* kFunction = "CommentsContainerHandler::GetCurrentAnnot";
    if (!view_.Lock()) {
        Fail(kResultNotInitialized, L"Not initialized", kFunction, __LINE__);
    }
    const auto document = CurrentDocument();
    if (!document) {
        Fail(kResultNotInitialized, L"Not initialized", kFunction, __LINE__);
    }
    const ElementReference item = CurrentItem();
    if (!item) {
        Fail(kResultNotInitialized, L"Not initialized", kFunction, __LINE__);
    }
    const std::uint32_t pageIndex = GetPageIndex();
    bool present = false;
    std::wstring indexText = item.Attribute("annot-name", &present);
    if (!present) {
        Fail(kResultNotInitialized, L"Not initialized", kFunction, __LINE__);
    }
    if (indexText.empty()) {
        return {};
    }
    std::wstring prefix;
    AppendDecimal(prefix, pageIndex);
    prefix.push_back(L'_');
    const std::size_t at = indexText.find(prefix);
    if (at != indexText.npos) {
        indexText.erase(at, prefix.size());
    }
    return FindAnnot(document.Get(), pageIndex, indexText);
}

ElementReference CommentsContainerHandler::FindAnnotItem(std::uint32_t pageIndex,
                                                         const PDFL::Annotation& annotation) const
{
    if (pageIndex == kPDNoPage || !annotation) {
        return {};
    }
    const auto document = CurrentDocument();
    if (!document) {
        return {};
    }
    const std::string name = ToNarrow(MakeAnnotUniqueName(document.Get(), pageIndex, annotation));
    ElementReference item = container_.SelectFirst("div.results-container " + ItemSelector(name));
    if (IsInsideItem(item)) {
        item = PageItem(pageIndex).SelectFirst(":root > li > div > ul.comments > " +
                                               ItemSelector(name));
    }
    return item;
}

// Contents are markup, and may look like items and pages: they are none.
bool CommentsContainerHandler::IsInsideItem(const ElementReference& element)
{
    return static_cast<bool>(element.Parent().Enclosing(":root li[annot-name]"));
}

ElementReference CommentsContainerHandler::CurrentItem() const
{
    return container_.SelectFirst(kCurrentItem);
}
