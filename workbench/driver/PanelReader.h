// Reads the content of the comments panel for one document view from the panel's document, as a
// user would see it. The PDF document is not accessed. [ui-thread]
#pragma once

#include "html-engine/Document.h"
#include "services/PanelElements.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Workbench {

// The buttons above the list, in order.
inline constexpr std::array<const char*, 6> kPanelButtons = {
    "expand-all", "collapse-all", "reply", "delete", "move-top", "move-bottom"};

struct PanelTooltip {
    bool linked = false;  // whether the item's titleid is the popup's id
    std::string subject;  // without the colon that closes the cell
    std::string title;
    std::optional<std::string> created;  // nullopt when the row is hidden
    std::optional<std::string> modified;
};

struct PanelItem {
    std::string annotName;
    std::vector<std::string> classes;
    bool current = false;
    std::string title;                    // of the heading, or the item's own text
    std::optional<std::string> contents;  // markup of the paragraph; nullopt in the simple form
    PanelTooltip tooltip;
};

enum class PanelPageState { kNone, kExpanded, kCollapsed };

struct PanelPage {
    std::uint32_t index = 0;
    std::string caption;
    PanelPageState state = PanelPageState::kNone;
    std::vector<PanelItem> items;
};

struct PanelView {
    std::string key;
    bool visible = false;
    bool loading = false;
    std::optional<std::string> noItems;  // the message in place of a list
    std::array<bool, kPanelButtons.size()> buttonDisabled{};
    std::vector<PanelPage> pages;
};

// Content of the container with that key; nullopt when the panel has none.
std::optional<PanelView> ReadPanelView(const HtmlEngine::Document& panel, const std::string& key);

}  // namespace Workbench
