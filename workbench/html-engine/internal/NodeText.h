// The characters of one text or comment node. Short text, which most of a list's text is, lies in
// the node itself.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace HtmlEngine::Internal {

class NodeText {
public:
    NodeText() = default;
    NodeText(const NodeText&) = delete;
    NodeText& operator=(const NodeText&) = delete;
    ~NodeText() { Release(); }

    std::string_view View() const
    {
        return {length_ <= kInlineSize ? characters_.here : characters_.elsewhere, length_};
    }

    // `text` may be part of this text. Fails with std::length_error beyond 4 GiB.
    void Assign(std::string_view text);

private:
    static constexpr std::size_t kInlineSize = 32;

    void Release()
    {
        if (length_ > kInlineSize) {
            std::allocator<char>().deallocate(characters_.elsewhere, length_);
        }
    }

    union {
        char here[kInlineSize];
        char* elsewhere;
    } characters_ = {};
    std::uint32_t length_ = 0;
};

static_assert(sizeof(NodeText) == 40);

}  // namespace HtmlEngine::Internal
