// Copies of documents: those that users request, and recovery copies of modified documents at
// shut-down. [any-thread]
#pragma once

#include "documents/Document.h"

#include <filesystem>
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

// Writes "NAME.recovered.pdf", with a number when that name is in use, beside `path` or into the
// first of `folders` that can be written. Never replaces a file; readable by the user only.
RecoveryCopy WriteRecoveryCopy(Documents::Document& document, const std::string& name,
                               const std::optional<std::filesystem::path>& path,
                               const std::vector<std::filesystem::path>& folders);

}  // namespace Workbench
