// Copies of documents: those that users ask for, and those that are written at the end for what is
// not saved. [any-thread]
#pragma once

#include "documents/Document.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace Workbench {

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
