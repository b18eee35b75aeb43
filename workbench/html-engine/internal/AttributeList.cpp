#include "html-engine/internal/AttributeList.h"

#include <algorithm>
#include <memory>

namespace HtmlEngine::Internal {

void AttributeList::Assign(std::span<const AttributeEntry> entries)
{
    std::allocator<AttributeEntry> allocator;
    AttributeEntry* block = nullptr;
    if (!entries.empty()) {
        block = allocator.allocate(entries.size() + 1);
        std::construct_at(block, AttributeEntry{static_cast<Atom>(entries.size()), 1});
        std::uninitialized_copy(entries.begin(), entries.end(), block + 1);
    }
    if (block_ != nullptr && --block_->value == 0) {
        allocator.deallocate(block_, std::size_t{block_->name} + 1);
    }
    block_ = block;
}

}  // namespace HtmlEngine::Internal
