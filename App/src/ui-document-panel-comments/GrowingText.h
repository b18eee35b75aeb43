// Room for a text that is put together part by part, when it is known how far it has come: fresh
// memory is the dearest thing about a large list.
#pragma once

#include <algorithm>
#include <cstddef>

// Before a part of `size` characters is appended with which `share` (above 0 to 1) of the whole is
// done: where room is lacking, makes as much as the whole is likely to need.
template <class Text>
void MakeRoomForAll(Text& text, std::size_t size, double share)
{
    const std::size_t needed = text.size() + size;
    if (text.capacity() < needed) {
        constexpr double kSpare = 1.1;
        const double likely = static_cast<double>(needed) / share * kSpare;
        text.reserve(std::max(needed, static_cast<std::size_t>(likely)));
    }
}
