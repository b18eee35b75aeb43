// The workbench as a program: its options, what it prints, and how it ends.
#pragma once

#include <iosfwd>

namespace Workbench {

// Exit statuses of the program.
inline constexpr int kExitDone = 0;
inline constexpr int kExitFailed = 1;      // wrong options, or the panel failed
inline constexpr int kExitNoDocument = 2;  // a file is missing, no PDF, or needs a password
inline constexpr int kExitBadStep = 3;     // a step of a script cannot be carried out

// Runs the program. Steps may come from `input`; results go to `output`, everything else to
// `errors`. A status other than 0 comes with one line on `errors`, and with nothing on `output` but
// what the steps of a script have printed before.
int RunProgram(int argumentCount, const char* const* arguments, std::istream& input,
               std::ostream& output, std::ostream& errors);

}  // namespace Workbench
