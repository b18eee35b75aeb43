#include "html-engine/internal/NodeText.h"

#include <cstring>
#include <limits>
#include <stdexcept>

namespace HtmlEngine::Internal {

void NodeText::Assign(std::string_view text)
{
    if (text.size() > std::numeric_limits<std::uint32_t>::max()) {
        throw std::length_error("HtmlEngine: a text node is limited to 4 GiB");
    }
    if (text.size() <= kInlineSize) {
        char copy[kInlineSize] = {};
        if (!text.empty()) {
            std::memcpy(copy, text.data(), text.size());
        }
        Release();
        std::memcpy(characters_.here, copy, kInlineSize);
    } else {
        char* block = std::allocator<char>().allocate(text.size());
        std::memcpy(block, text.data(), text.size());
        Release();
        characters_.elsewhere = block;
    }
    length_ = static_cast<std::uint32_t>(text.size());
}

}  // namespace HtmlEngine::Internal
