// Documents as files: reading them, and writing them without replacing what the user has not seen.
// [any-thread]
#pragma once

#include "documents/Document.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace Workbench {

// A file of the disk as it was at a time: another one means that somebody has written it since.
struct FileStamp {
    std::filesystem::file_time_type time;
    std::uintmax_t size = 0;

    bool operator==(const FileStamp&) const = default;
};

// Nothing for a missing file, and for one that cannot be asked.
std::optional<FileStamp> StampOf(const std::filesystem::path& path);

// A document that was read or made, and where it came from.
struct DocumentFile {
    std::string name;  // for the user
    std::shared_ptr<Documents::Document> content;
    std::optional<std::filesystem::path> path{};  // absolute; nothing: no file of this disk
    std::optional<FileStamp> stamp{};             // of the file when it was read or written last
};

struct ReadingOptions {
    std::string password{};
    bool listAll = false;  // list every annotation, whatever its subtype and flags
};

// Reads a PDF file; its name is the file's without the folder. Throws ActionRefused.
DocumentFile ReadDocument(const std::filesystem::path& path, const ReadingOptions& options);

// Reads a PDF file's bytes. Throws ActionRefused.
DocumentFile ReadDocumentBytes(std::string bytes, const std::string& name,
                               const ReadingOptions& options);

// Makes a document in memory: "COMMENTS:PAGES" or "COMMENTS:PAGES:SEED", filled with the population
// that benchmarks use. Throws ActionRefused.
DocumentFile MakeMemoryDocument(const std::string& description, bool listAll);

// Which file may be replaced by one that is written.
enum class Replaceable : std::uint8_t {
    kNothing,
    kOwnFile,  // the document's own one, as it was when it was read or written last
    kAnything,
};

// Calls `write`, unless the file at `path` may not be replaced; the stamp of the file written.
// `known` is the stamp of the document's own file; without one it may be replaced. A missing file
// never blocks the write. Throws ActionRefused.
std::optional<FileStamp> WriteDocument(const std::filesystem::path& path, Replaceable replaceable,
                                       const std::optional<FileStamp>& known,
                                       const std::function<Documents::SaveResult()>& write);

}  // namespace Workbench
