// The panel's tree as messages for browser clients: a snapshot for each client that connects, then
// the changes, for each client of what it has been sent. [ui-thread]
#pragma once

#include "html-engine/Document.h"
#include "html-engine/TreeObserver.h"
#include "web/ClientView.h"
#include "web/HttpServer.h"

#include <cstdint>
#include <map>
#include <vector>

namespace Workbench {

class PanelStream : private HtmlEngine::TreeObserver {
public:
    // `panel` outlives the stream.
    explicit PanelStream(HtmlEngine::Document& panel);
    ~PanelStream() override;

    // Begins to follow the tree for a client, with the whole tree as its first changes.
    void Connect(SocketNumber client);
    void Disconnect(SocketNumber client);

    // Whether the tree has changed since the last call of ForgetChange, also where no client looks.
    // Not noticed before the first client.
    bool HasChanged() const noexcept { return hasChanged_; }
    void ForgetChange() noexcept { hasChanged_ = false; }

    // The messages for a client since the last call, in order.
    std::vector<PanelMessage> TakeMessages(SocketNumber client);

    // What a connected client sees.
    ClientView& ViewOf(SocketNumber client) { return views_.at(client); }

    // The element with that id of clients (see IdOf); kNoElement when the tree has none.
    HtmlEngine::ElementHandle ElementWith(std::uint64_t id) const;

private:
    void OnInserted(HtmlEngine::NodeHandle parent, HtmlEngine::NodeHandle previous,
                    HtmlEngine::NodeHandle first, HtmlEngine::NodeHandle last) noexcept override;
    void OnRemoved(HtmlEngine::NodeHandle parent, HtmlEngine::NodeHandle previous,
                   HtmlEngine::NodeHandle first, HtmlEngine::NodeHandle last) noexcept override;
    void OnTextChanged(HtmlEngine::NodeHandle text) noexcept override;
    void OnAttributesChanged(HtmlEngine::NodeHandle element) noexcept override;
    void OnStatesChanged(HtmlEngine::NodeHandle element) noexcept override;
    void OnPageReplaced() noexcept override;

    HtmlEngine::Document& panel_;
    const HtmlEngine::TreeReader reader_;
    template <class Record>
    void Note(const Record& record);

    std::map<SocketNumber, ClientView> views_;
    bool hasChanged_ = false;
};

}  // namespace Workbench
