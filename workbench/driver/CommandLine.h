// The workbench as a program: its options, what it prints, and how it ends.
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
inline constexpr int kExitFailed = 1;      // wrong options, or the panel failed
inline constexpr int kExitNoDocument = 2;  // a file is missing, no PDF, or needs a password
inline constexpr int kExitBadStep = 3;     // a step of a script cannot be carried out

// What the user wants to see in the browser.
struct BrowserRequest {
    SessionOptions session;
    std::vector<std::string> files;
    std::vector<std::string> memoryDocuments;
    std::uint16_t port = 0;  // 0: a free one
};

// Shows the panel in the browser until the user ends it; the program's exit status.
using Browse =
    std::function<int(const BrowserRequest& request, std::ostream& output, std::ostream& errors)>;

// Runs the program. Steps may come from `input`; results go to `output`, everything else to
// `errors`. A status other than 0 comes with one line on `errors`, and with nothing on `output` but
// what the steps of a script have printed before. Without `browse` the build has no workbench in
// the browser, and says so when it is wanted.
int RunProgram(int argumentCount, const char* const* arguments, std::istream& input,
               std::ostream& output, std::ostream& errors, const Browse& browse = {});

}  // namespace Workbench
