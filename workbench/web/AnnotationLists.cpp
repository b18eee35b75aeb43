#include "web/AnnotationLists.h"

#include "documents/Records.h"
#include "web/DocumentJson.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <functional>
#include <string>

namespace Workbench {

namespace {

using Json = nlohmann::ordered_json;

// Shorter lists are sent whole.
constexpr std::size_t kManyAnnotations = 64;

// Lists that are kept of a page.
constexpr std::size_t kKeptLists = 8;

// Number of equal fingerprints at the beginning of two ranges.
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
    std::vector<Json> descriptions;
    for (std::size_t index = 0; index < count; ++index) {
        Json description = DescribeAnnotation(snapshot.Get()->annotations[index], index);
        // Without the position, which changes with every annotation before it.
        Json lasting = description;
        if (lasting.is_object()) {
            lasting.erase("index");
        }
        sent.fingerprints.push_back(std::hash<std::string>()(ToText(lasting)));
        descriptions.push_back(std::move(description));
    }
    Json reply = {{"document", number},
                  {"revision", revision},
                  {"page", page},
                  {"label", sent.label},
                  {"count", count}};
    std::size_t begin = 0;
    std::size_t end = count;
    if (known != nullptr) {
        const auto& now = sent.fingerprints;
        const auto& before = known->fingerprints;
        begin = CountSame(now.begin(), now.end(), before.begin(), before.end());
        const auto rest = static_cast<std::ptrdiff_t>(begin);
        end -= CountSame(now.rbegin(), now.rend() - rest, before.rbegin(), before.rend() - rest);
        reply["kept"] = {begin, count - end};
    }
    Json annotations = Json::array();
    for (std::size_t index = begin; index < end; ++index) {
        if (!descriptions[index].is_null()) {
            annotations.push_back(std::move(descriptions[index]));
        }
    }
    reply["annotations"] = std::move(annotations);
    return reply;
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
    if (sent->fingerprints.size() < kManyAnnotations) {
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
