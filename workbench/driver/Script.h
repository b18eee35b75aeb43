// A script of the workbench: steps that drive the panel as its user and its host would, one a line,
// each carried out completely before the next one is read. docs/workbench.md lists the steps.
// [ui-thread]
#pragma once

#include "driver/Session.h"

#include <iosfwd>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace Workbench {

// A step that cannot be carried out; it has changed nothing. The text says why, in one line.
class StepError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The words of a line, as a shell splits them: at blanks, with '...', "..." and \ to quote. Nothing
// for a line that begins with #, and for what follows a # that stands alone; "#delete" is a word.
// Throws StepError for a quote that is not closed and for a \ with nothing behind it.
std::vector<std::string> SplitWords(std::string_view line);

// Carries out one step, given as its words, at least one. What it prints goes to `output`. Does not
// wait. Throws StepError, ActionRefused, and std::runtime_error when the panel is broken.
void RunStep(Session& session, std::ostream& output, const std::vector<std::string>& words);

// Carries out the steps of a text, and returns when all are done. After each the panel is idle,
// what the step printed has left `output`, and what the panel failed in and what was amiss with
// files meanwhile stands on `errors`, a line each. Throws StepError for a bad step, with its line;
// the steps before it have taken effect. Throws std::runtime_error when the steps cannot be read
// and when the panel is broken or does not become idle.
void RunScript(Session& session, std::istream& steps, std::ostream& output, std::ostream& errors);

// The text with line ends replaced by blanks, for messages.
std::string OneLine(std::string text);

}  // namespace Workbench
