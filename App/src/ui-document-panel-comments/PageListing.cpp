#include "PageListing.h"

#include "DecimalText.h"

#include <algorithm>
#include <bit>
#include <optional>

namespace {

// A hash of what equal annotations have in common; nothing when the library does not tell.
std::optional<std::uint64_t> SharedByEquals(const PDFL::Annotation& annotation)
{
    if (!annotation) {
        return 0;
    }
    _PDRect rectangle{};
    const ResultCode code = annotation.Rectangle(rectangle);
    if (code != kResultOk && !IsAbsence(code)) {
        return {};
    }
    std::uint64_t hash = annotation.Subtype();
    for (const double side : {rectangle.left, rectangle.bottom, rectangle.right, rectangle.top}) {
        hash = (hash ^ std::bit_cast<std::uint64_t>(side + 0.0)) * 0x9E3779B97F4A7C15u;
        hash ^= hash >> 29;
    }
    return hash;
}

}  // namespace

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

// Equal annotations have one subtype and one rectangle, so on a crowded page only those are
// compared that have these in common. On others comparing all takes less time than asking for both.
std::uint32_t PageListing::FirstPosition()
{
    constexpr std::uint32_t kCrowded = 64;
    const auto last = static_cast<std::uint32_t>(annotations_.size() - 1);
    comparesAll_ = comparesAll_ || (last >= kCrowded && !IndexUpTo(last));
    if (last < kCrowded || comparesAll_) {
        const auto first =
            std::find_if(annotations_.begin(), annotations_.end() - 1,
                         [&](const auto& former) { return former.IsEqual(annotations_.back()); });
        return static_cast<std::uint32_t>(first - annotations_.begin());
    }
    std::uint32_t position = last;
    const auto [begin, end] = positions_.equal_range(lastKey_);
    for (auto candidate = begin; candidate != end; ++candidate) {
        if (candidate->second < position &&
            annotations_[candidate->second].IsEqual(annotations_[last])) {
            position = candidate->second;
        }
    }
    return position;
}

bool PageListing::IndexUpTo(std::uint32_t last)
{
    for (; indexed_ <= last; ++indexed_) {
        const auto key = SharedByEquals(annotations_[indexed_]);
        if (!key) {
            return false;
        }
        positions_.emplace(*key, indexed_);
        lastKey_ = *key;
    }
    return true;
}
