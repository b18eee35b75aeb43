// What every fuzz target is made of.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

// The target itself: returns 0, or ends the program when it has found a fault.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

// The bytes of an input as text.
inline std::string_view TextOf(const std::uint8_t* data, std::size_t size)
{
    return {reinterpret_cast<const char*>(data), size};
}

// Says what is wrong, and with which input, and ends the program.
[[noreturn]] void EndWithFault(std::string_view fault, std::string_view input);
