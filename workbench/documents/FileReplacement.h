// Writing a file beside its target and renaming it over the target once it is complete. Linux only.
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>

class QPDFWriter;

namespace Documents {

// Takes the next bytes of a file; throws when they cannot be written.
using ByteSink = std::function<void(const unsigned char* bytes, std::size_t length)>;

// Calls `write` with the sink of a new file in the target's folder, makes the file durable and
// renames it over `target`, whose permission bits it takes over; a symbolic link stays one, and
// what it leads to is replaced. When anything fails (the write, or a target that is write-protected
// or a folder), the new file is removed, the target is as it was, and the exception says why.
void ReplaceFile(const std::filesystem::path& target,
                 const std::function<void(const ByteSink& sink)>& write);

// The same with what the writer, set up but for its output, writes.
void ReplaceFile(const std::filesystem::path& target, QPDFWriter& writer);

}  // namespace Documents
