// Scripts of the workbench: steps that act as the panel's user and host, one per line, each
// completed before the next one is read. docs/workbench.md lists the steps. [ui-thread]
#pragma once

#include "driver/Session.h"

#include <iosfwd>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace Workbench {

// A step that cannot be carried out; it has no effect. The text gives the reason in one line.
class StepError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Splits a line into words as a shell does: at blanks, with '...', "..." and \ to quote. A # that
// begins the line or stands alone starts a comment; "#delete" is a word. Throws StepError for an
// unclosed quote and for a \ at the end.
std::vector<std::string> SplitWords(std::string_view line);

// Carries out one step, given as at least one word, and prints its result to `output`. Does not
// wait until the panel is idle. Throws StepError, ActionRefused, and std::runtime_error when the
// panel is broken.
void RunStep(Session& session, std::ostream& output, const std::vector<std::string>& words);

// Carries out all steps of a text. After each step waits until the panel is idle, flushes `output`,
// and writes failures of the panel and problems of files to `errors`, one per line. Throws
// StepError, with the line number, for a bad step; earlier steps have taken effect. Throws
// std::runtime_error when the steps cannot be read and when the panel is broken or does not become
// idle, and for a line that is longer than 128 MiB.
void RunScript(Session& session, std::istream& steps, std::ostream& output, std::ostream& errors);

// Throws std::runtime_error when what was printed so far cannot be written.
void Flush(std::ostream& output);

// The text with line ends replaced by blanks, for messages.
std::string OneLine(std::string text);

}  // namespace Workbench
