// Files that documents are written to, their own ones and others. [any-thread]
#pragma once

#include "documents/Document.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace Workbench {

// A file of the disk as it was at a time: another one means that somebody has written it since.
struct FileStamp {
    std::filesystem::file_time_type time;
    std::uintmax_t size = 0;

    bool operator==(const FileStamp&) const = default;
};

// Nothing where there is no file, or none that can be asked.
std::optional<FileStamp> StampOf(const std::filesystem::path& path);

// What may be replaced where a file is to be written.
enum class Replaceable : std::uint8_t {
    kNothing,
    kOwnFile,  // the document's own one, as it was when it was read or written last
    kAnything,
};

struct WriteOutcome {
    std::string error;   // empty when it is written
    std::string reason;  // "exists", "changed-on-disk" or "write" when there is an error
    std::optional<FileStamp> stamp;  // of the file that was written
};

// Calls `write`, unless what is at `path` may not be replaced. `known` is the document's own file
// as it was; nothing: not known, and it may be replaced. One that is gone is in nobody's way.
WriteOutcome WriteGuarded(const std::filesystem::path& path, Replaceable replaceable,
                          const std::optional<FileStamp>& known,
                          const std::function<Documents::SaveResult()>& write);

// Writes the document as it stands; it stays modified. A write that fails leaves what was there.
Documents::SaveResult WriteCopy(Documents::Document& document, const std::filesystem::path& path);

// Where recovery copies go when they cannot stand beside the original: the user's state folder,
// then the folder for temporary files.
std::vector<std::filesystem::path> RecoveryFolders();

struct RecoveryCopy {
    std::string error;  // empty when there is one
    std::filesystem::path file;
};

// Writes "NAME.recovered.pdf", with a number when that is taken, beside `path` or into the first of
// `folders` that takes it. Never replaces a file; only the user may read it.
RecoveryCopy WriteRecoveryCopy(Documents::Document& document, const std::string& name,
                               const std::optional<std::filesystem::path>& path,
                               const std::vector<std::filesystem::path>& folders);

}  // namespace Workbench
