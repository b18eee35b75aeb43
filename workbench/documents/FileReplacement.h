// Writing a file that appears under its name only when it is complete. Linux only.
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>

class QPDFWriter;

namespace Documents {

// Takes the next bytes of a file; throws when they cannot be written.
using ByteSink = std::function<void(const unsigned char* bytes, std::size_t length)>;

// Called with the complete file, open for writing, before it has its name.
using FileHook = std::function<void(int descriptor)>;

// Calls `write` with the sink of a new file in the target's folder, makes the file durable and
// renames it over `target`, whose permission bits it takes over; a symbolic link stays one, and
// what it leads to is replaced or created. When anything fails (the write, or a target that is
// write-protected or a folder), nothing is left of the new file, the target is as it was, and the
// exception says why. The new file has no name while it is written, so that nothing is left either
// when the process is ended meanwhile; only file systems without such files show it under a hidden
// name.
void ReplaceFile(
    const std::filesystem::path& target, const std::function<void(const ByteSink& sink)>& write,
    const FileHook& onComplete = [](int) {});

// The same with what the writer, set up but for its output, writes.
void ReplaceFile(const std::filesystem::path& target, QPDFWriter& writer);

// The same for a name that is not in use, readable by the user only: returns false, and changes
// nothing, when there is anything of that name.
bool CreateFile(
    const std::filesystem::path& target, const std::function<void(const ByteSink& sink)>& write,
    const FileHook& onComplete = [](int) {});

}  // namespace Documents
