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

// Takes a view's content in order, as it is read.
class PanelSink {
public:
    virtual ~PanelSink() = default;

    // First, without the pages.
    virtual void TakeView(const PanelView& view) = 0;
    // Each page without its items, which follow.
    virtual void TakePage(const PanelPage& page) = 0;
    virtual void TakeItem(const PanelItem& item) = 0;
};

// Puts the pieces together to a whole view.
class PanelViewCollector final : public PanelSink {
public:
    explicit PanelViewCollector(PanelView& view) : view_(view) {}

    void TakeView(const PanelView& view) override { view_ = view; }
    void TakePage(const PanelPage& page) override { view_.pages.push_back(page); }
    void TakeItem(const PanelItem& item) override { view_.pages.back().items.push_back(item); }

private:
    PanelView& view_;
};

// Reads the content of the container with that key; false when the panel has none.
bool ReadPanelView(const HtmlEngine::Document& panel, const std::string& key, PanelSink& sink);

// The same as a whole; nullopt when the panel has none.
std::optional<PanelView> ReadPanelView(const HtmlEngine::Document& panel, const std::string& key);

}  // namespace Workbench
