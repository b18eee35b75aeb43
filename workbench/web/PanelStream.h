// The panel's page as pages in browsers follow it: the whole tree for one that comes, then what
// changes, for all of them alike. [ui-thread]
#pragma once

#include "html-engine/Document.h"
#include "html-engine/TreeObserver.h"
#include "web/NodeNumbers.h"
#include "web/PanelWriter.h"

#include <cstdint>
#include <vector>

namespace Workbench {

class PanelStream : private HtmlEngine::TreeObserver {
public:
    // `page` outlives the stream.
    explicit PanelStream(HtmlEngine::Document& page);
    ~PanelStream() override;

    // The whole tree. From the first call on changes are noted; TakeChanges must be empty.
    std::vector<PanelMessage> Snapshot();

    // What has changed since the last call, in order. Empty before the first Snapshot.
    std::vector<PanelMessage> TakeChanges();

    // Nobody follows any more: nothing is noted until the next Snapshot.
    void Rest();

    // The element with a number that pages know; kNoElement when there is none.
    HtmlEngine::ElementHandle ElementWith(std::uint64_t number) const;
    // 0 for an element that pages do not know.
    std::uint64_t NumberOf(HtmlEngine::ElementHandle element) const;

private:
    void OnInserted(HtmlEngine::NodeHandle parent, HtmlEngine::NodeHandle previous,
                    HtmlEngine::NodeHandle first, HtmlEngine::NodeHandle last) noexcept override;
    void OnRemoved(HtmlEngine::NodeHandle parent, HtmlEngine::NodeHandle first,
                   HtmlEngine::NodeHandle last) noexcept override;
    void OnTextChanged(HtmlEngine::NodeHandle text) noexcept override;
    void OnAttributesChanged(HtmlEngine::NodeHandle element) noexcept override;
    void OnStatesChanged(HtmlEngine::NodeHandle element) noexcept override;
    void OnPageReplaced() noexcept override;

    HtmlEngine::Document& page_;
    const HtmlEngine::TreeReader reader_;
    NodeNumbers numbers_;
    PanelWriter changes_;
    bool follows_ = false;
};

}  // namespace Workbench
