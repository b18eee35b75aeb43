// Copies of documents: those that users request, and recovery copies of modified documents.
// [any-thread]
#pragma once

#include "documents/Document.h"
#include "documents/FileReplacement.h"

#include <atomic>
#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace Workbench {

// Writes the document's present state; the document stays modified. A failed write leaves the
// existing file unchanged.
Documents::SaveResult WriteCopy(Documents::Document& document, const std::filesystem::path& path);

// Folders for recovery copies that cannot be written beside the original: the user's state folder,
// then the folder for temporary files.
std::vector<std::filesystem::path> RecoveryFolders();

struct RecoveryCopy {
    std::string error;  // empty on success
    std::filesystem::path file;
};

// The newest recovery copy beside a file, if it is newer than the file and no running workbench
// keeps it.
std::optional<std::filesystem::path> FindRecoveryCopy(const std::filesystem::path& path);

// The recovery copy of one document. Its file is locked while the object lives, and stays
// afterwards unless the copy was discarded.
class KeptCopy {
public:
    // Without a file, or with one that there is.
    KeptCopy() = default;
    explicit KeptCopy(std::filesystem::path file);
    ~KeptCopy();
    KeptCopy(const KeptCopy&) = delete;
    KeptCopy& operator=(const KeptCopy&) = delete;

    // Writes the document's present state: at first "NAME.recovered.pdf", with a number when that
    // name is in use, beside `path` or into the first of `folders` that can be written; later in
    // the place of the former copy. Replaces no other file; readable by the user only.
    RecoveryCopy Write(Documents::Document& document, const std::string& name,
                       const std::optional<std::filesystem::path>& path,
                       const std::vector<std::filesystem::path>& folders);

    // The file goes with the object, which may still be written by another thread.
    void Discard() noexcept { isDiscarded_ = true; }

private:
    using Writing = std::function<void(const Documents::ByteSink& sink)>;

    RecoveryCopy WriteAnywhere(const std::string& name,
                               const std::optional<std::filesystem::path>& path,
                               const std::vector<std::filesystem::path>& folders,
                               const Writing& write);

    std::atomic<bool> isDiscarded_ = false;
    std::mutex mutex_;
    std::filesystem::path file_;  // empty: none yet
    int lock_ = -1;
};

}  // namespace Workbench
