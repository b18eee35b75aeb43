// Writes a tree of the HTML engine and its changes as messages for browser clients. A big insertion
// is cut into several: what has not been written of a node's children follows as further insertions
// into it. [ui-thread]
#pragma once

#include "html-engine/TreeReader.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Workbench {

// One message of type "panel".
using PanelMessage = std::string;

// A node's id for clients: its handle, in the 53 bits that a browser's numbers hold and with few
// digits for most nodes, because handles count generations from 1. 0 for no node. Never given to
// another node.
constexpr std::uint64_t IdOf(HtmlEngine::NodeHandle node)
{
    return node == HtmlEngine::kNoNodeHandle ? 0 : node - (std::uint64_t{1} << 32);
}
constexpr HtmlEngine::NodeHandle NodeWith(std::uint64_t id)
{
    return id == 0 ? HtmlEngine::kNoNodeHandle : id + (std::uint64_t{1} << 32);
}

class PanelWriter {
public:
    static constexpr std::size_t kMostNodes = 2000;  // per message
    // A message ends with the first change or node behind this size.
    static constexpr std::size_t kFullBytes = std::size_t{512} << 10;

    explicit PanelWriter(HtmlEngine::TreeReader reader) : reader_(reader) {}

    // The siblings from `first` to `last` with all inside them, under their parent as it is now.
    void Insert(HtmlEngine::NodeHandle first, HtmlEngine::NodeHandle last);
    // They, and what is inside them, are no more in the tree.
    void Remove(HtmlEngine::NodeHandle first, HtmlEngine::NodeHandle last);
    void Text(HtmlEngine::NodeHandle text);
    void Attributes(HtmlEngine::NodeHandle element);
    void States(HtmlEngine::NodeHandle element);

    // Drops what was written, and writes the whole tree instead.
    void Reset(HtmlEngine::NodeHandle root);

    bool IsEmpty() const noexcept { return changes_.empty() && messages_.empty(); }

    // The messages since the last call.
    std::vector<PanelMessage> Take();

private:
    class Insertion;

    bool IsFull() const noexcept;
    void BeginChange();
    void EndMessage(std::size_t remaining);

    void WriteNode(HtmlEngine::NodeHandle node);
    void WriteNodeEnd(HtmlEngine::NodeHandle element);
    void WriteAttributes(HtmlEngine::NodeHandle element);
    void WriteId(HtmlEngine::NodeHandle node);

    const HtmlEngine::TreeReader reader_;
    std::vector<PanelMessage> messages_;
    std::string changes_;
    std::size_t nodes_ = 0;  // in `changes_`
    bool reset_ = false;
};

}  // namespace Workbench
