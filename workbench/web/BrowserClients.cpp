#include "web/BrowserClients.h"

#include "web/DocumentJson.h"

#include <nlohmann/json.hpp>

namespace Workbench {

namespace {

nlohmann::ordered_json Notice(const std::string& text, RefusalReason reason)
{
    return {{"type", "notice"}, {"text", text}, {"reason", WordOf(reason)}};
}

}  // namespace

void BrowserClients::Send(SocketNumber client, const Json& message) const
{
    Send(client, ToText(message));
}

void BrowserClients::Broadcast(const Json& message) const
{
    Broadcast(ToText(message));
}

void BrowserClients::Send(SocketNumber client, std::string message) const
{
    send_(client, std::make_shared<const std::string>(std::move(message)));
}

void BrowserClients::Broadcast(std::string message) const
{
    const auto shared = std::make_shared<const std::string>(std::move(message));
    for (const SocketNumber client : clients_) {
        send_(client, shared);
    }
}

void BrowserClients::Notify(const std::string& text) const
{
    Broadcast(Notice(text, RefusalReason::kOther));
}

void BrowserClients::Notify(SocketNumber client, const std::string& text,
                            RefusalReason reason) const
{
    Send(client, Notice(text, reason));
}

}  // namespace Workbench
