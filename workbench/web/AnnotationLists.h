// Replies of the command "annotations": the annotations of a page, for a client that knows an
// earlier list of them only what has changed.
#pragma once

#include "actions/OpenDocuments.h"

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace Workbench {

// A list as it was sent.
struct SentAnnotations;

// The reply for a page; `sent` receives what it was made of. Without the descriptions at its
// beginning and its end that `known` has, too; null: with all. [any-thread]
nlohmann::ordered_json DescribeAnnotations(DocumentNumber number, Documents::Document& document,
                                           std::uint32_t page, const SentAnnotations* known,
                                           SentAnnotations& sent);

// The last lists of each page that has many annotations: clients ask at the same time. [ui-thread]
class AnnotationLists {
public:
    using SentPtr = std::shared_ptr<const SentAnnotations>;

    // A list with a label of its own, to be sent.
    std::shared_ptr<SentAnnotations> Begin();

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
