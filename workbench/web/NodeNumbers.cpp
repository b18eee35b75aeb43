#include "web/NodeNumbers.h"

#include <bit>
#include <utility>

namespace Workbench {

using HtmlEngine::kNoNodeHandle;
using HtmlEngine::NodeHandle;

// The lower half of a handle counts the places of the engine's nodes, which are written in much the
// order in which they were made: neighbours there are neighbours here, block by block.
std::size_t NodeNumbers::Home(NodeHandle node) const noexcept
{
    constexpr std::uint64_t kGoldenRatio = 0x9E3779B97F4A7C15u;
    constexpr int kBlockBits = 6;
    const std::uint64_t place = node & 0xFFFFFFFFu;
    const int bits = std::countr_zero(entries_.size()) - kBlockBits;
    const std::uint64_t block = (place >> kBlockBits) * kGoldenRatio >> (64 - bits);
    return static_cast<std::size_t>(block << kBlockBits | (place & ((1u << kBlockBits) - 1)));
}

// Where the node is, or would go.
std::size_t NodeNumbers::PlaceOf(NodeHandle node) const noexcept
{
    std::size_t place = Home(node);
    while (entries_[place].node != node && entries_[place].node != kNoNodeHandle) {
        place = (place + 1) & (entries_.size() - 1);
    }
    return place;
}

void NodeNumbers::Reserve(std::size_t count)
{
    const std::size_t size = std::bit_ceil(count + count / 2 + 1);
    if (size <= entries_.size()) {
        return;
    }
    const std::vector<Entry> former = std::exchange(entries_, std::vector<Entry>(size));
    for (const Entry& entry : former) {
        if (entry.node != kNoNodeHandle) {
            entries_[PlaceOf(entry.node)] = entry;
        }
    }
}

std::uint64_t NodeNumbers::Give(NodeHandle node)
{
    Entry* entry = &entries_[PlaceOf(node)];
    if (entry->node == kNoNodeHandle) {
        if (3 * (count_ + 1) > 2 * entries_.size()) {
            Reserve(2 * count_ + 1);
            entry = &entries_[PlaceOf(node)];
        }
        *entry = {node, ++lastNumber_};
        ++count_;
    }
    return entry->number;
}

std::uint64_t NodeNumbers::Of(NodeHandle node) const noexcept
{
    return node == kNoNodeHandle ? 0 : entries_[PlaceOf(node)].number;
}

NodeHandle NodeNumbers::NodeWith(std::uint64_t number) const noexcept
{
    for (const Entry& entry : entries_) {
        if (entry.number == number && entry.node != kNoNodeHandle) {
            return entry.node;
        }
    }
    return kNoNodeHandle;
}

void NodeNumbers::Forget(NodeHandle node) noexcept
{
    const std::size_t mask = entries_.size() - 1;
    std::size_t hole = PlaceOf(node);
    if (entries_[hole].node == kNoNodeHandle) {
        return;
    }
    // What stands behind the hole moves into it, unless that is before where it belongs.
    for (std::size_t next = (hole + 1) & mask; entries_[next].node != kNoNodeHandle;
         next = (next + 1) & mask) {
        const std::size_t distance = (next - Home(entries_[next].node)) & mask;
        if (distance >= ((next - hole) & mask)) {
            entries_[hole] = entries_[next];
            hole = next;
        }
    }
    entries_[hole] = {};
    --count_;
}

void NodeNumbers::ForgetAll() noexcept
{
    for (Entry& entry : entries_) {
        entry = {};
    }
    count_ = 0;
}

}  // namespace Workbench
