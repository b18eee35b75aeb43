#include "PageListing.h"

#include "DecimalText.h"

#include <algorithm>

void WriteUniqueName(std::uint32_t pageIndex, std::uint32_t position, std::wstring& name)
{
    name.clear();
    AppendDecimal(name, pageIndex);
    name.push_back(L'_');
    AppendDecimal(name, position);
}

PDFL::Page AcquirePage(BLDocument* document, std::uint32_t pageIndex)
{
    PDFL::Page page;
    const CallResult result =
        CallMethod<BLDocument::AcquirePage>(document, pageIndex, page.Receive());
    if (result.Succeeded() && !page) {
        PDFL::CountFailedQuery();
    }
    return page;
}

bool PageListing::Next(std::wstring& name)
{
    while (annotations_.size() < count_) {
        const auto position = static_cast<std::uint32_t>(annotations_.size());
        annotations_.push_back(PDFL::Annotation::At(page_, position));
        if (Annotation() && Annotation().IsListed()) {
            WriteUniqueName(pageIndex_, FirstPosition(), name);
            return true;
        }
    }
    return false;
}

std::uint32_t PageListing::FirstPosition() const
{
    const auto first =
        std::find_if(annotations_.begin(), annotations_.end() - 1,
                     [&](const auto& former) { return former.IsEqual(annotations_.back()); });
    return static_cast<std::uint32_t>(first - annotations_.begin());
}
