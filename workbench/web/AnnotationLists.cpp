#include "web/AnnotationLists.h"

#include "documents/Records.h"
#include "web/DocumentJson.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <utility>

namespace Workbench {

// Descriptions made of the same block are the same.
struct SentAnnotations {
    std::uint64_t label = 0;
    std::vector<Documents::PropertyBlockRef> blocks;  // of the positions; null: no annotation
};

namespace {

using Json = nlohmann::ordered_json;

// Shorter lists are sent whole.
constexpr std::size_t kManyAnnotations = 64;

// Lists that are kept of a page.
constexpr std::size_t kKeptLists = 8;

// Number of equal blocks at the beginning of two ranges.
template <class Iterator>
std::size_t CountSame(Iterator begin, Iterator end, Iterator otherBegin, Iterator otherEnd)
{
    return static_cast<std::size_t>(std::mismatch(begin, end, otherBegin, otherEnd).first - begin);
}

}  // namespace

Json DescribeAnnotations(DocumentNumber number, Documents::Document& document, std::uint32_t page,
                         const SentAnnotations* known, SentAnnotations& sent)
{
    const std::uint64_t revision = document.Revision();
    const Documents::PageRef snapshot = document.AcquirePage(page);
    const std::size_t count = snapshot ? snapshot.Get()->annotations.size() : 0;
    for (std::size_t index = 0; index < count; ++index) {
        const Documents::AnnotationRef& annotation = snapshot.Get()->annotations[index];
        sent.blocks.push_back(annotation ? annotation.Get()->properties.Load() : nullptr);
    }
    Json reply = {{"document", number},
                  {"revision", revision},
                  {"page", page},
                  {"label", sent.label},
                  {"count", count}};
    std::size_t begin = 0;
    std::size_t end = count;
    if (known != nullptr) {
        const auto& now = sent.blocks;
        const auto& before = known->blocks;
        begin = CountSame(now.begin(), now.end(), before.begin(), before.end());
        const auto rest = static_cast<std::ptrdiff_t>(begin);
        end -= CountSame(now.rbegin(), now.rend() - rest, before.rbegin(), before.rend() - rest);
        reply["kept"] = {begin, count - end};
    }
    Json annotations = Json::array();
    for (std::size_t index = begin; index < end; ++index) {
        if (sent.blocks[index]) {
            annotations.push_back(DescribeAnnotation(snapshot.Get()->annotations[index], index));
        }
    }
    reply["annotations"] = std::move(annotations);
    return reply;
}

std::shared_ptr<SentAnnotations> AnnotationLists::Begin()
{
    auto sent = std::make_shared<SentAnnotations>();
    sent->label = ++lastLabel_;
    return sent;
}

AnnotationLists::SentPtr AnnotationLists::Find(DocumentNumber document, std::uint32_t page,
                                               std::optional<std::uint64_t> label) const
{
    const auto found = last_.find({document, page});
    if (found == last_.end()) {
        return nullptr;
    }
    const auto& lists = found->second;
    const auto list = std::find_if(lists.begin(), lists.end(),
                                   [&](const SentPtr& sent) { return label == sent->label; });
    return list == lists.end() ? nullptr : *list;
}

void AnnotationLists::Keep(DocumentNumber document, std::uint32_t page, SentPtr sent)
{
    if (sent->blocks.size() < kManyAnnotations) {
        last_.erase({document, page});
        return;
    }
    std::vector<SentPtr>& lists = last_[{document, page}];
    lists.push_back(std::move(sent));
    if (lists.size() > kKeptLists) {
        lists.erase(lists.begin());
    }
}

void AnnotationLists::Forget(DocumentNumber document)
{
    std::erase_if(last_, [&](const auto& entry) { return entry.first.first == document; });
}

}  // namespace Workbench
