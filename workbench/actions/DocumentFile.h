// Reading and writing document files. Writing never replaces a file that changed since it was read.
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

// Modification time and size of a file; a difference means that another program has written it.
struct FileStamp {
    std::filesystem::file_time_type time;
    std::uintmax_t size = 0;

    bool operator==(const FileStamp&) const = default;
};

// nullopt for a missing file, and for one whose status cannot be read.
std::optional<FileStamp> StampOf(const std::filesystem::path& path);

// A document and the file that it was read from, if any.
struct DocumentFile {
    std::string name;  // for the user
    std::shared_ptr<Documents::Document> content;
    std::optional<std::filesystem::path> path{};  // absolute; nullopt: not from a local file
    std::optional<FileStamp> stamp{};             // of the file at the last read or write
    std::string password{};                       // that it was opened with
};

struct ReadingOptions {
    std::string password{};
    bool listAll = false;     // list every annotation, whatever its subtype and flags
    bool forListing = false;  // the document is listed and nothing else
};

// Reads a PDF file; the document's name is the file name without folder. Throws ActionRefused.
DocumentFile ReadDocument(const std::filesystem::path& path, const ReadingOptions& options);

// Reads a PDF file's bytes. Throws ActionRefused.
DocumentFile ReadDocumentBytes(std::string bytes, const std::string& name,
                               const ReadingOptions& options);

// Creates a document in memory from "COMMENTS:PAGES" or "COMMENTS:PAGES:SEED", filled with the
// benchmarks' population of comments. Throws ActionRefused.
DocumentFile MakeMemoryDocument(const std::string& description, bool listAll);

// Which existing file a write may replace.
enum class Replaceable : std::uint8_t {
    kNothing,
    kOwnFile,  // the document's own file, unchanged since the last read or write
    kAnything,
};

// Calls `write`, unless the file at `path` may not be replaced; returns the stamp of the written
// file. `known` is the stamp of the document's own file; without one it may be replaced. A missing
// file never blocks the write. Throws ActionRefused.
std::optional<FileStamp> WriteDocument(const std::filesystem::path& path, Replaceable replaceable,
                                       const std::optional<FileStamp>& known,
                                       const std::function<Documents::SaveResult()>& write);

}  // namespace Workbench
