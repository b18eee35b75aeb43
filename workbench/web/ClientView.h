// What one browser client has been sent of the panel's tree, and the messages that keep it up to
// date. Of a list the client is sent a window, the rows that it asks for, and the number of the
// others; of the tooltips, those that it asks for; everything else whole. [ui-thread]
#pragma once

#include "html-engine/Document.h"
#include "html-engine/TreeReader.h"
#include "services/PanelElements.h"
#include "web/PanelWriter.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace Workbench {

class ClientView final : private HeldChildren {
public:
    // Most rows of a window; what goes beyond it is left out.
    static constexpr std::size_t kMostRows = 1000;

    // A position in a list: a page item, and one of its items.
    struct Place {
        std::size_t page = 0;
        std::size_t item = 0;
    };

    explicit ClientView(const HtmlEngine::Document& panel);

    // Discards recorded changes and writes the whole tree, with empty windows.
    void Reset();

    // The messages since the last call.
    std::vector<PanelMessage> Take();

    // Moves the window of a list: from an item of a page to before an item of the same or a later
    // page, with the captions of both. Without effect for ids of other elements.
    void MoveWindow(std::uint64_t list, Place from, Place to);

    // Sends the contents of a tooltip, unless they have been sent.
    void OpenTooltip(std::uint64_t tooltip);

    // Records a change of the tree, right after it; as in TreeObserver.
    void Inserted(HtmlEngine::NodeHandle parent, HtmlEngine::NodeHandle first,
                  HtmlEngine::NodeHandle last);
    void Removed(HtmlEngine::NodeHandle parent, HtmlEngine::NodeHandle previous,
                 HtmlEngine::NodeHandle first, HtmlEngine::NodeHandle last);
    void TextChanged(HtmlEngine::NodeHandle text);
    void AttributesChanged(HtmlEngine::NodeHandle element);
    void StatesChanged(HtmlEngine::NodeHandle element);

private:
    using NodeHandle = HtmlEngine::NodeHandle;

    // An element of which the client has a part.
    struct Held {
        ListPart part = ListPart::kNone;
        std::size_t from = 0;           // position of the first child in the window
        std::vector<NodeHandle> shown;  // the children in the window
    };
    // Children removed at a position of a list, and others inserted there, not written yet.
    struct Splice {
        NodeHandle list = 0;  // 0: none
        std::size_t at = 0;
        std::size_t removed = 0;
        std::size_t inserted = 0;
        std::string sizes;  // of inserted page items
    };

    bool IsHeld(NodeHandle element) const override;
    void Describe(NodeHandle element, std::string& out) override;

    bool IsSent(NodeHandle node) const;
    std::size_t CountChildren(NodeHandle list) const;
    NodeHandle ChildAt(NodeHandle list, std::size_t index) const;
    std::size_t IndexOf(NodeHandle child) const;
    std::size_t IndexBehind(NodeHandle previous) const;
    void AppendSizes(NodeHandle list, std::size_t from, std::size_t count, std::string& out) const;

    // What a change of children concerns: nothing that the client has, its tree, or the rows of a
    // list.
    enum class Target : std::uint8_t { kNone, kTree, kRows };
    Target TargetOf(NodeHandle parent);
    std::vector<NodeHandle> ElementsBetween(NodeHandle first, NodeHandle last) const;

    void InsertRows(NodeHandle list, const std::vector<NodeHandle>& rows);
    void RemoveRows(NodeHandle list, std::size_t at, std::size_t count);
    void NoteSplice(NodeHandle list, std::size_t at, std::size_t removed, std::size_t inserted);
    void WriteSplice();
    void SetWindow(NodeHandle list, std::size_t from, std::size_t to);
    void ShowInserted(NodeHandle list, std::size_t at, const std::vector<NodeHandle>& rows);
    NodeHandle Predecessor(const Held& held, std::size_t at, std::size_t count,
                           NodeHandle row) const;
    void ForgetUnsent();
    void NoteSize(NodeHandle node);
    void WriteSizes();

    const HtmlEngine::Document& panel_;
    const HtmlEngine::TreeReader reader_;
    std::unordered_map<NodeHandle, Held> held_;
    Splice splice_;
    std::unordered_set<NodeHandle> resized_;  // page items outside the window, of another size now
    PanelWriter writer_;
};

}  // namespace Workbench
