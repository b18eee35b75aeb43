// What every fuzz target is made of.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// The target itself: returns 0, or ends the program when it has found a fault.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

// The bytes of an input as text.
inline std::string_view TextOf(const std::uint8_t* data, std::size_t size)
{
    return {reinterpret_cast<const char*>(data), size};
}

// Takes the values of a target off the bytes of its input, one after another.
class InputReader {
public:
    explicit InputReader(std::string_view input) : rest_(input) {}

    bool IsAtEnd() const noexcept { return rest_.empty(); }
    std::string_view Rest() const noexcept { return rest_; }

    // 0 at the end.
    unsigned Byte()
    {
        const unsigned byte = IsAtEnd() ? 0 : static_cast<unsigned char>(rest_.front());
        rest_.remove_prefix(std::min<std::size_t>(rest_.size(), 1));
        return byte;
    }

    // The text before the next `end`, which is taken too, or before the end of the input.
    std::string TextUntil(char end)
    {
        const std::string_view text = rest_.substr(0, rest_.find(end));
        rest_.remove_prefix(std::min(rest_.size(), text.size() + 1));
        return std::string(text);
    }

private:
    std::string_view rest_;
};

// The text with one wide character for each byte.
inline std::wstring Widened(std::string_view text)
{
    std::wstring wide;
    for (const char byte : text) {
        wide.push_back(static_cast<unsigned char>(byte));
    }
    return wide;
}

// Says what is wrong, and with which input, and ends the program.
[[noreturn]] void EndWithFault(std::string_view fault, std::string_view input);
