// Opening and saving on behalf of browser clients. [ui-thread]
#pragma once

#include "actions/OpenDocuments.h"
#include "web/Commands.h"

#include <exception>
#include <filesystem>
#include <functional>
#include <string>

namespace Workbench {

class BrowserSession;

// Opens a file that a browser has sent: 200 with {"document"}, or 422 with {"error", "reason"}.
void OpenUpload(BrowserSession& session, const std::string& name, const std::string& password,
                std::string bytes, PendingAnswerPtr answer);

// `failure` is what stands in the way; null when the file is written.
using SavedCallback = std::function<void(BrowserSession&, const std::exception_ptr& failure)>;

// Saves on another thread; without `overwrite` only what the user has seen is replaced.
void SaveDocument(BrowserSession& session, const OpenDocument& document,
                  const std::filesystem::path& path, bool overwrite, SavedCallback then);

// Answers a command that has saved.
void AnswerSaved(BrowserSession& session, const ClientRequest& request,
                 const std::exception_ptr& failure);

}  // namespace Workbench
