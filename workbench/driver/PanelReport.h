// Reports of the panel's content for programs (JSON) and for people (text), written while the panel
// is read, so that no second copy of a list is made.
#pragma once

#include "driver/PanelReader.h"
#include "driver/TextBlocks.h"
#include "services/BLDocumentViewObject.h"
#include "services/CallLog.h"

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <vector>

namespace Workbench {

// One view with its file as the user named it, as JSON without blanks:
// {"file", "key", "visible", "loading", "noItems", "buttons", "pages"}.
class JsonReport final : public PanelSink {
public:
    JsonReport(TextBlocks& text, const std::string& file);

    void TakeView(const PanelView& view) override;
    void TakePage(const PanelPage& page) override;
    void TakeItem(const PanelItem& item) override;

    // Ends the view, behind a last member "view" where one is given; null: none.
    void Finish(const BLDocumentViewObject* view);

private:
    void EndPage();

    TextBlocks& text_;
    bool hasPages_ = false;
    bool hasItems_ = false;
};

// The same for people, on several lines.
class TextReport final : public PanelSink {
public:
    TextReport(TextBlocks& text, const std::string& file);

    void TakeView(const PanelView& view) override;
    void TakePage(const PanelPage& page) override;
    void TakeItem(const PanelItem& item) override;

private:
    TextBlocks& text_;
};

// The last go-to request and the focus of a view:
// {"page", "target": [left, bottom, right, top], "mode", "focused": "2_1"}, each may be null.
nlohmann::ordered_json ToJson(const BLDocumentViewObject& view);

// Calls as [["BLDocumentView.GoTo", arguments...], ...].
nlohmann::ordered_json ToJson(const std::vector<HostCall>& calls);

// JSON in one line of UTF-8. Bytes of file names that are not valid UTF-8 become U+FFFD.
std::string ToLine(const nlohmann::ordered_json& json);

}  // namespace Workbench
