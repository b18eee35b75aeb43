#include "web/RecoveryCopies.h"

#include "documents/FileReplacement.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <exception>
#include <string_view>
#include <system_error>

namespace Workbench {

namespace fs = std::filesystem;

namespace {

constexpr const char* kStateFolder = "comments-workbench";
constexpr int kMostCopies = 1000;

bool WriteAll(int descriptor, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR) {
            return false;
        }
        bytes.remove_prefix(written < 0 ? 0 : static_cast<std::size_t>(written));
    }
    return ::fsync(descriptor) == 0;
}

// Creates and writes a new file; returns the error, 0 on success. A failed file is removed.
int WriteNewFile(const fs::path& file, std::string_view bytes)
{
    const int descriptor = ::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (descriptor < 0) {
        return errno;
    }
    const int error = WriteAll(descriptor, bytes) ? 0 : errno;
    ::close(descriptor);
    if (error != 0) {
        ::unlink(file.c_str());
    }
    return error;
}

// The file's name without ".pdf" in upper or lower case.
std::string Stem(const std::string& name)
{
    const fs::path path = fs::path(name).filename();
    std::string extension = path.extension().string();
    for (char& c : extension) {
        c = static_cast<char>(c | 0x20);
    }
    const std::string stem = extension == ".pdf" ? path.stem().string() : path.string();
    return stem.empty() ? "document" : stem;
}

}  // namespace

Documents::SaveResult WriteCopy(Documents::Document& document, const fs::path& path)
{
    const Documents::BytesResult result = document.WriteBytes();
    if (!result.error.empty()) {
        return {result.error};
    }
    try {
        Documents::ReplaceFile(path, [&](const Documents::ByteSink& sink) {
            sink(reinterpret_cast<const unsigned char*>(result.bytes.data()), result.bytes.size());
        });
        return {};
    } catch (const std::exception& error) {
        return {path.string() + ": " + error.what()};
    }
}

std::vector<fs::path> RecoveryFolders()
{
    std::vector<fs::path> folders;
    const char* const state = std::getenv("XDG_STATE_HOME");
    const char* const home = std::getenv("HOME");
    if (state != nullptr && *state == '/') {
        folders.push_back(fs::path(state) / kStateFolder);
    } else if (home != nullptr && *home == '/') {
        folders.push_back(fs::path(home) / ".local" / "state" / kStateFolder);
    }
    std::error_code error;
    if (fs::path temporary = fs::temp_directory_path(error); !error) {
        folders.push_back(std::move(temporary));
    }
    return folders;
}

RecoveryCopy WriteRecoveryCopy(Documents::Document& document, const std::string& name,
                               const std::optional<fs::path>& path,
                               const std::vector<fs::path>& folders)
{
    const Documents::BytesResult result = document.WriteBytes();
    if (!result.error.empty()) {
        return {result.error, {}};
    }
    std::vector<fs::path> places = folders;
    if (path) {
        places.insert(places.begin(), path->parent_path());
    }
    int error = ENOENT;
    for (const fs::path& place : places) {
        std::error_code ignored;
        fs::create_directories(place, ignored);
        for (int number = 1; number <= kMostCopies; ++number) {
            const std::string ending =
                number == 1 ? ".recovered.pdf" : ".recovered-" + std::to_string(number) + ".pdf";
            const fs::path file = place / (Stem(name) + ending);
            error = WriteNewFile(file, result.bytes);
            if (error == 0) {
                return {{}, file};
            }
            if (error != EEXIST) {
                break;
            }
        }
    }
    return {name + ": no recovery copy could be written: " + std::generic_category().message(error),
            {}};
}

}  // namespace Workbench
