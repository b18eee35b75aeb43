// Small numbers for the nodes that pages were told of. The engine's handles do not fit into the
// numbers of a browser. Numbers count up and are never given twice. [ui-thread]
#pragma once

#include "html-engine/Types.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Workbench {

class NodeNumbers {
public:
    // The node's number; a new one for a node without. The node is not kNoNodeHandle.
    std::uint64_t Give(HtmlEngine::NodeHandle node);

    // Makes room for that many nodes in all.
    void Reserve(std::size_t count);

    // 0 for a node without a number.
    std::uint64_t Of(HtmlEngine::NodeHandle node) const noexcept;

    // kNoNodeHandle when no node has that number. Linear: meant for what a person does.
    HtmlEngine::NodeHandle NodeWith(std::uint64_t number) const noexcept;

    // Forgets one node, or all. Numbers go on from where they were.
    void Forget(HtmlEngine::NodeHandle node) noexcept;
    void ForgetAll() noexcept;

    std::size_t Count() const noexcept { return count_; }

private:
    struct Entry {
        HtmlEngine::NodeHandle node = HtmlEngine::kNoNodeHandle;
        std::uint64_t number = 0;
    };

    std::size_t Home(HtmlEngine::NodeHandle node) const noexcept;
    std::size_t PlaceOf(HtmlEngine::NodeHandle node) const noexcept;

    // Open addressing; the size is a power of two, and one entry in three is free at least.
    std::vector<Entry> entries_ = std::vector<Entry>(1024);
    std::size_t count_ = 0;
    std::uint64_t lastNumber_ = 0;
};

}  // namespace Workbench
