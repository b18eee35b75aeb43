// Serialises a tree of the HTML engine and its changes as messages for a browser client. A large
// insertion is split: children that do not fit follow as further insertions into their parent. The
// children of some elements are held back. [ui-thread]
#pragma once

#include "html-engine/TreeReader.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Workbench {

// One message of type "panel".
using PanelMessage = std::string;

// A node's id for clients: its handle less the first generation, which fits the 53 bits of a
// JavaScript number and is short for most nodes. 0 for no node. Never reused.
constexpr std::uint64_t IdOf(HtmlEngine::NodeHandle node)
{
    return node == HtmlEngine::kNoNodeHandle ? 0 : node - (std::uint64_t{1} << 32);
}
constexpr HtmlEngine::NodeHandle NodeWith(std::uint64_t id)
{
    return id == 0 ? HtmlEngine::kNoNodeHandle : id + (std::uint64_t{1} << 32);
}

// The elements whose children are not sent with them.
class HeldChildren {
public:
    virtual bool IsHeld(HtmlEngine::NodeHandle element) const = 0;

    // Appends the JSON value that the message has in place of the children. Called once for each
    // held element that is written.
    virtual void Describe(HtmlEngine::NodeHandle element, std::string& out) = 0;

protected:
    ~HeldChildren() = default;
};

class PanelWriter {
public:
    static constexpr std::size_t kMostNodes = 2000;  // per message
    // A message ends at the first change or node beyond this size.
    static constexpr std::size_t kFullBytes = std::size_t{512} << 10;

    // `held` outlives the writer.
    PanelWriter(HtmlEngine::TreeReader reader, HeldChildren& held) : reader_(reader), held_(held) {}

    // Records the insertion of the siblings from `first` to `last` with their descendants, at their
    // present place in the tree.
    void Insert(HtmlEngine::NodeHandle first, HtmlEngine::NodeHandle last);
    // The same for some children of an element whose children are held back, behind `previous`.
    void InsertHeld(std::span<const HtmlEngine::NodeHandle> children,
                    HtmlEngine::NodeHandle previous);
    // Records the removal of the siblings from `first` to `last`.
    void Remove(HtmlEngine::NodeHandle first, HtmlEngine::NodeHandle last);
    void Text(HtmlEngine::NodeHandle text);
    void Attributes(HtmlEngine::NodeHandle element);
    void States(HtmlEngine::NodeHandle element);

    // Records any other change, as a JSON array.
    void Change(std::string_view json);

    // Discards recorded changes and writes the whole tree instead.
    void Reset(HtmlEngine::NodeHandle root);

    // The messages since the last call.
    std::vector<PanelMessage> Take();

private:
    class Insertion;

    bool IsFull() const noexcept;
    void BeginChange();
    void EndMessage(std::size_t remaining);

    bool WriteNode(HtmlEngine::NodeHandle node);
    void WriteNodeEnd(HtmlEngine::NodeHandle element);
    void WriteAttributes(HtmlEngine::NodeHandle element);
    void WriteId(HtmlEngine::NodeHandle node);

    const HtmlEngine::TreeReader reader_;
    HeldChildren& held_;
    std::vector<PanelMessage> messages_;
    std::string changes_;
    std::size_t nodes_ = 0;  // in `changes_`
    bool reset_ = false;
};

}  // namespace Workbench
