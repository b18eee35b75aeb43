// The workbench's command line: options, output and exit statuses.
#pragma once

#include "driver/Session.h"

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace Workbench {

// Exit statuses of the program.
inline constexpr int kExitDone = 0;
inline constexpr int kExitFailed = 1;      // wrong options, panel failed, no memory or output
inline constexpr int kExitNoDocument = 2;  // a file is missing, not a PDF, or needs a password
inline constexpr int kExitBadStep = 3;     // a step of a script cannot be carried out

// Options and documents of a run in the browser.
struct BrowserRequest {
    SessionOptions session;
    std::vector<std::string> files;
    std::vector<std::string> memoryDocuments;
    std::uint16_t port = 0;  // 0: a free one
};

// Runs the workbench in the browser until the user ends it; returns the program's exit status.
using Browse =
    std::function<int(const BrowserRequest& request, std::ostream& output, std::ostream& errors)>;

// Runs the program and returns its exit status. A script may be read from `input`; results go to
// `output`, messages to `errors`. A status other than 0 comes with one line on `errors`; `output`
// then holds only what earlier steps of a script have printed. `browse` is empty in a build without
// the browser part, which then reports that it is missing.
int RunProgram(int argumentCount, const char* const* arguments, std::istream& input,
               std::ostream& output, std::ostream& errors, const Browse& browse = {});

}  // namespace Workbench
