// The connected browser clients. All receive the same messages and all may send commands.
// [ui-thread]
#pragma once

#include "actions/ActionRefused.h"
#include "web/HttpServer.h"

#include <nlohmann/json_fwd.hpp>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Workbench {

class BrowserClients {
public:
    using Json = nlohmann::ordered_json;
    using Sender = std::function<void(SocketNumber, std::shared_ptr<const std::string>)>;

    explicit BrowserClients(Sender send) : send_(std::move(send)) {}

    void Add(SocketNumber client) { clients_.push_back(client); }
    void Remove(SocketNumber client) { std::erase(clients_, client); }
    bool IsEmpty() const noexcept { return clients_.empty(); }
    const std::vector<SocketNumber>& All() const noexcept { return clients_; }

    void Send(SocketNumber client, const Json& message) const;
    void Broadcast(const Json& message) const;
    // The same for a serialised message.
    void Send(SocketNumber client, std::string message) const;
    void Broadcast(std::string message) const;

    // Sends a notice of one line to all clients, or to one.
    void Notify(const std::string& text) const;
    void Notify(SocketNumber client, const std::string& text, RefusalReason reason) const;

private:
    const Sender send_;
    std::vector<SocketNumber> clients_;
};

}  // namespace Workbench
