#include "documents/UniqueName.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <random>

namespace Documents {

std::string MakeUniqueName()
{
    std::random_device source;
    std::array<std::uint32_t, 4> words{};
    for (std::uint32_t& word : words) {
        word = static_cast<std::uint32_t>(source());
    }
    words[1] = (words[1] & 0xFFFF0FFFu) | 0x00004000u;  // version
    words[2] = (words[2] & 0x3FFFFFFFu) | 0x80000000u;  // variant
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%08x-%04x-%04x-%04x-%04x%08x", words[0],
                  words[1] >> 16, words[1] & 0xFFFFu, words[2] >> 16, words[2] & 0xFFFFu, words[3]);
    return text.data();
}

}  // namespace Documents
