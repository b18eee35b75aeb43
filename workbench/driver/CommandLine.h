// The workbench as a program: its options, what it prints, and how it ends.
#pragma once

#include <iosfwd>

namespace Workbench {

// Exit statuses of the program.
inline constexpr int kExitDone = 0;
inline constexpr int kExitFailed = 1;      // wrong options, or the panel failed
inline constexpr int kExitNoDocument = 2;  // a file is missing, no PDF, or needs a password

// Runs the program. Results go to `output`, everything else to `errors`; a status other than 0
// comes with one line on `errors` and nothing on `output`.
int RunProgram(int argumentCount, const char* const* arguments, std::ostream& output,
               std::ostream& errors);

}  // namespace Workbench
