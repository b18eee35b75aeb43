// Reports of the panel's content for programs (JSON) and for people (text).
#pragma once

#include "driver/PanelReader.h"
#include "services/BLDocumentViewObject.h"
#include "services/CallLog.h"

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <vector>

namespace Workbench {

// One view with its file as the user named it:
// {"file", "key", "visible", "loading", "noItems", "buttons", "pages"}.
nlohmann::ordered_json ToJson(const PanelView& view, const std::string& file);

// The last go-to request and the focus of a view:
// {"page", "target": [left, bottom, right, top], "mode", "focused": "2_1"}, each may be null.
nlohmann::ordered_json ToJson(const BLDocumentViewObject& view);

// Calls as [["BLDocumentView.GoTo", arguments...], ...].
nlohmann::ordered_json ToJson(const std::vector<HostCall>& calls);

// JSON in one line of UTF-8. Bytes of file names that are not valid UTF-8 become U+FFFD.
std::string ToLine(const nlohmann::ordered_json& json);

// The same for people, on several lines.
std::string ToText(const PanelView& view, const std::string& file);

}  // namespace Workbench
