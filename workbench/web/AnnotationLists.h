// Replies of the command "annotations": the annotations of a page, for a client that knows an
// earlier list of them only what has changed.
#pragma once

#include "actions/OpenDocuments.h"

#include <nlohmann/json_fwd.hpp>

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace Workbench {

// A list as it was sent.
struct SentAnnotations {
    std::uint64_t label = 0;                // names the list; never given twice
    std::vector<std::size_t> fingerprints;  // of the descriptions, one for each position
};

// The reply for a page; `sent` receives the fingerprints. Without the descriptions at its beginning
// and its end that `known` has, too; null: with all. [any-thread]
nlohmann::ordered_json DescribeAnnotations(DocumentNumber number, Documents::Document& document,
                                           std::uint32_t page, const SentAnnotations* known,
                                           SentAnnotations& sent);

// The last lists of each page that has many annotations: clients ask at the same time. [ui-thread]
class AnnotationLists {
public:
    using SentPtr = std::shared_ptr<const SentAnnotations>;

    std::uint64_t NextLabel() noexcept { return ++lastLabel_; }

    // The list of that label; null when it is not one of the last ones of the page.
    SentPtr Find(DocumentNumber document, std::uint32_t page,
                 std::optional<std::uint64_t> label) const;
    void Keep(DocumentNumber document, std::uint32_t page, SentPtr sent);
    void Forget(DocumentNumber document);

private:
    std::uint64_t lastLabel_ = 0;
    std::map<std::pair<DocumentNumber, std::uint32_t>, std::vector<SentPtr>> last_;
};

}  // namespace Workbench
