// Clicks and keys of browser clients: their target elements in the panel, and the checks before one
// acts on a comment. [ui-thread]
#pragma once

#include "web/HttpServer.h"

namespace Workbench {

class BrowserSession;
class ClientMessage;

// Handles the message "click" or "key". Input that deletes a comment waits for jobs that hold its
// document, and later input waits behind it. Throws MessageError.
void TakePanelInput(BrowserSession& session, SocketNumber client, const ClientMessage& message,
                    bool isKey);

}  // namespace Workbench
