#include "web/RecoveryCopies.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <exception>
#include <system_error>
#include <utility>

namespace Workbench {

namespace fs = std::filesystem;

namespace {

constexpr const char* kStateFolder = "comments-workbench";
constexpr int kMostCopies = 1000;

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

std::string CopyName(const std::string& name, int number)
{
    return Stem(name) +
           (number == 1 ? ".recovered.pdf" : ".recovered-" + std::to_string(number) + ".pdf");
}

// Locks a file for as long as the descriptor, or one made from it, is open. File systems without
// locks do without.
int Locked(int descriptor)
{
    if (descriptor >= 0) {
        ::flock(descriptor, LOCK_SH | LOCK_NB);
    }
    return descriptor;
}

bool IsLocked(const fs::path& file)
{
    const int descriptor = ::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    const bool isLocked =
        descriptor >= 0 && ::flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    if (descriptor >= 0) {
        ::close(descriptor);
    }
    return isLocked;
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

std::optional<fs::path> FindRecoveryCopy(const fs::path& path)
{
    constexpr int kMostNumbers = 20;
    std::error_code error;
    fs::file_time_type newest = fs::last_write_time(path, error);
    std::optional<fs::path> found;
    for (int number = 1; !error && number <= kMostNumbers; ++number) {
        const fs::path copy = path.parent_path() / CopyName(path.string(), number);
        std::error_code missing;
        const fs::file_time_type time = fs::last_write_time(copy, missing);
        if (!missing && time > newest && fs::is_regular_file(fs::symlink_status(copy, missing)) &&
            !IsLocked(copy)) {
            newest = time;
            found = copy;
        }
    }
    return found;
}

KeptCopy::KeptCopy(fs::path file)
    : file_(std::move(file)),
      lock_(Locked(::open(file_.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)))
{
}

KeptCopy::~KeptCopy()
{
    if (isDiscarded_ && !file_.empty()) {
        ::unlink(file_.c_str());
    }
    if (lock_ >= 0) {
        ::close(lock_);
    }
}

RecoveryCopy KeptCopy::Write(Documents::Document& document, const std::string& name,
                             const std::optional<fs::path>& path,
                             const std::vector<fs::path>& folders)
{
    const Documents::BytesResult result = document.WriteBytes();
    if (!result.error.empty()) {
        return {result.error, {}};
    }
    const auto write = [&](const Documents::ByteSink& sink) {
        sink(reinterpret_cast<const unsigned char*>(result.bytes.data()), result.bytes.size());
    };
    const std::lock_guard guard(mutex_);
    RecoveryCopy copy = WriteAnywhere(name, path, folders, write);
    if (copy.error.empty()) {
        file_ = copy.file;
    }
    return copy;
}

// Replaces the copy that there is; without one, or where that is no longer possible, makes another.
RecoveryCopy KeptCopy::WriteAnywhere(const std::string& name, const std::optional<fs::path>& path,
                                     const std::vector<fs::path>& folders, const Writing& write)
{
    // Before it can be seen, so that nobody finds a copy that seems to be left.
    const auto lock = [this](int descriptor) {
        if (lock_ >= 0) {
            ::close(lock_);
        }
        lock_ = Locked(::fcntl(descriptor, F_DUPFD_CLOEXEC, 0));
    };
    std::error_code missing;
    if (!file_.empty() && fs::is_regular_file(fs::symlink_status(file_, missing))) {
        try {
            Documents::ReplaceFile(file_, write, lock);
            return {{}, file_};
        } catch (const std::exception&) {
        }
    }
    std::vector<fs::path> places = folders;
    if (path) {
        places.insert(places.begin(), path->parent_path());
    }
    std::string error = "there is no folder for it";
    for (const fs::path& place : places) {
        std::error_code ignored;
        fs::create_directories(place, ignored);
        try {
            for (int number = 1; number <= kMostCopies; ++number) {
                const fs::path file = place / CopyName(name, number);
                if (Documents::CreateFile(file, write, lock)) {
                    return {{}, file};
                }
            }
        } catch (const std::exception& exception) {
            error = exception.what();
        }
    }
    return {name + ": no recovery copy could be written: " + error, {}};
}

}  // namespace Workbench
