// Clicks and keys of browser clients: which element of the panel they are for, and which of them
// may act on a comment. [ui-thread]
#pragma once

#include "web/HttpServer.h"

namespace Workbench {

class BrowserSession;
class ClientMessage;

// Takes the message "click" or "key". What deletes a comment waits for jobs that hold its document,
// and whatever comes behind waiting input waits too. Throws MessageError.
void TakePanelInput(BrowserSession& session, SocketNumber client, const ClientMessage& message,
                    bool isKey);

}  // namespace Workbench
