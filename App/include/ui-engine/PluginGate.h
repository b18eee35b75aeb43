// For hosts built with another compiler than the module: calls what may throw, and throws nothing.
// Exported by the library `plugin-gate`, which is built with the module's compiler; plain C calls.
//
// What was thrown is answered by its code: that of a ServiceObjectException, 6 for anything else
// and for a code that would read as success. Its message, in UTF-8 with a zero at its end, is
// written to `text`, whose `textSize` bytes take as many whole characters as they hold; an empty
// text when nothing was thrown. `text` may be null when `textSize` is 0. [ui-thread]
#pragma once

#include "ui-engine/ModuleExports.h"
#include "ui-engine/UIInplacePlugin.SO.h"

#include <cstddef>
#include <cstdint>

extern "C" {

// Calls a slot of the plug-in with its argument block, which is ignored where the slot has none. 3
// for a null plug-in, 8 for a slot that it does not have, else what the slot returns.
ResultCode PluginGateCall(UIInplacePlugin* plugin, std::uint32_t slot, const void* arguments,
                          char* text, std::size_t textSize);

// Calls the module's export RegisterResources. 3 for a null export, else what that returns.
ResultCode PluginGateRegisterResources(RegisterResourcesExport registerResources, UIEngine* engine,
                                       char* text, std::size_t textSize);

}  // extern "C"
