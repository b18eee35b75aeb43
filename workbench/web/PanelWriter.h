// Writes a tree of the HTML engine and its changes as the messages that pages understand. A big
// insertion is cut into several: what has not been written of a node's children follows as further
// insertions into it. [ui-thread]
#pragma once

#include "html-engine/TreeReader.h"
#include "web/NodeNumbers.h"

#include <cstddef>
#include <string>
#include <vector>

namespace Workbench {

// One message, but for what stands before its changes: `"changes":[...],"remaining":K}`.
struct PanelMessage {
    bool reset = false;  // the page forgets all nodes first
    std::string rest;
};

class PanelWriter {
public:
    static constexpr std::size_t kMostNodes = 2000;  // per message
    // A message ends with the first change or node behind this size.
    static constexpr std::size_t kFullBytes = std::size_t{512} << 10;

    PanelWriter(HtmlEngine::TreeReader reader, NodeNumbers& numbers);

    // The siblings from `first` to `last` with all inside them, under their parent as it is now;
    // they get numbers.
    void Insert(HtmlEngine::NodeHandle first, HtmlEngine::NodeHandle last);
    // They lose their numbers, and so does what is inside them.
    void Remove(HtmlEngine::NodeHandle first, HtmlEngine::NodeHandle last);
    void Text(HtmlEngine::NodeHandle text);
    void Attributes(HtmlEngine::NodeHandle element);
    void States(HtmlEngine::NodeHandle element);

    // Drops what was written, and writes the whole tree instead.
    void Reset(HtmlEngine::NodeHandle root);

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
    void WriteNumber(HtmlEngine::NodeHandle node);

    const HtmlEngine::TreeReader reader_;
    NodeNumbers& numbers_;
    std::vector<PanelMessage> messages_;
    std::string changes_;
    std::size_t nodes_ = 0;  // in `changes_`
    bool reset_ = false;
};

}  // namespace Workbench
