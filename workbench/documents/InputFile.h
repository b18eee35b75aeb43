// Reading a whole file by its path. Linux only.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace Documents {

// The largest file that is read.
inline constexpr std::size_t kMostFileBytes = std::size_t{512} << 20;

struct InputFile {
    std::string bytes;
    bool isWriteProtected = false;
};

// Reads a file of the disk, at once or not at all: a folder, device, pipe or socket, and a file
// that is larger than the bound, are refused without reading. Throws std::runtime_error, a clause
// for the user, and std::bad_alloc.
InputFile ReadInputFile(const std::filesystem::path& path);

}  // namespace Documents
