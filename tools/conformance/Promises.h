// The promises, in groups. Each function proves some and reports a line for each; `module` is the
// file under test, which every group loads for itself.
#pragma once

#include "Report.h"

#include <string>

namespace Conformance {

// The three exports and the files that the module carries.
void ProveExports(Report& report, const std::string& module);
// Memory of the module's objects, what each slot answers, counts, weak references, error records.
void ProveObjects(Report& report, const std::string& module);
// Orders of the plug-in's calls.
void ProveOrders(Report& report, const std::string& module);
// What the module does with its host: events, posted calls, the check rule, what it gives back.
void ProveHostRules(Report& report, const std::string& module);
// Host tables that end early or have gaps.
void ProveHostTables(Report& report, const std::string& module);
// Unloading, again and again.
void ProveUnloading(Report& report, const std::string& module);

}  // namespace Conformance
