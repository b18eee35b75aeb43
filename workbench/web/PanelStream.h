// The panel's tree as messages for browser clients: a snapshot for each client that connects, then
// the changes, the same for all. [ui-thread]
#pragma once

#include "html-engine/Document.h"
#include "html-engine/TreeObserver.h"
#include "web/PanelWriter.h"

#include <cstdint>
#include <vector>

namespace Workbench {

class PanelStream : private HtmlEngine::TreeObserver {
public:
    // `panel` outlives the stream.
    explicit PanelStream(HtmlEngine::Document& panel);
    ~PanelStream() override;

    // The whole tree. Changes are recorded from the first call on; those before it must have been
    // taken with TakeChanges.
    std::vector<PanelMessage> Snapshot();

    bool HasChanges() const noexcept { return !changes_.IsEmpty(); }

    // The changes since the last call, in order. Empty before the first Snapshot.
    std::vector<PanelMessage> TakeChanges();

    // Stops recording changes until the next Snapshot.
    void Stop();

    // The element with that id of clients (see IdOf); kNoElement when the tree has none.
    HtmlEngine::ElementHandle ElementWith(std::uint64_t id) const;

private:
    void OnInserted(HtmlEngine::NodeHandle parent, HtmlEngine::NodeHandle previous,
                    HtmlEngine::NodeHandle first, HtmlEngine::NodeHandle last) noexcept override;
    void OnRemoved(HtmlEngine::NodeHandle parent, HtmlEngine::NodeHandle first,
                   HtmlEngine::NodeHandle last) noexcept override;
    void OnTextChanged(HtmlEngine::NodeHandle text) noexcept override;
    void OnAttributesChanged(HtmlEngine::NodeHandle element) noexcept override;
    void OnStatesChanged(HtmlEngine::NodeHandle element) noexcept override;
    void OnPageReplaced() noexcept override;

    HtmlEngine::Document& panel_;
    const HtmlEngine::TreeReader reader_;
    PanelWriter changes_;
    bool follows_ = false;
};

}  // namespace Workbench
