#include "documents/FileReplacement.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <qpdf/Pipeline.hh>
#include <qpdf/QPDFWriter.hh>

#include <cerrno>
#include <cstdio>
#include <random>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace Documents {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void ThrowSystemError(const char* what)
{
    const std::error_code code{errno, std::generic_category()};
    throw std::runtime_error(std::string{what} + ": " + code.message());
}

void Check(bool succeeded, const char* what)
{
    if (!succeeded) {
        ThrowSystemError(what);
    }
}

// A name in the folder that nothing has, most likely; short, whatever is written is called.
fs::path HiddenName(const fs::path& folder)
{
    std::random_device random;
    return folder / (".comments-" + std::to_string(random()) + ".tmp");
}

// Written without the C library's streams, which forget a write that failed once a later one fits
// their buffer.
class UnfinishedFile {
public:
    explicit UnfinishedFile(const fs::path& folder)
        : folder_{folder},
          descriptor_{::open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, kMode)}
    {
        if (descriptor_ < 0 || ::access(Itself().c_str(), F_OK) != 0) {
            OpenWithName();
        }
        buffer_.reserve(kBufferSize);
    }
    UnfinishedFile(const UnfinishedFile&) = delete;
    UnfinishedFile& operator=(const UnfinishedFile&) = delete;
    ~UnfinishedFile()
    {
        Close();
        if (!name_.empty()) {
            ::unlink(name_.c_str());
        }
    }

    int Descriptor() const noexcept { return descriptor_; }

    void Write(const unsigned char* bytes, std::size_t length)
    {
        if (buffer_.size() + length > kBufferSize) {
            Flush();
        }
        if (length > kBufferSize) {
            WriteThrough(bytes, length);
        } else {
            buffer_.insert(buffer_.end(), bytes, bytes + length);
        }
    }

    void Complete(mode_t mode)
    {
        Flush();
        Check(::fchmod(descriptor_, mode) == 0, "cannot set the permissions");
        Check(::fsync(descriptor_) == 0, kCannotWrite);
    }

    // A link replaces nothing, so a file without a name has one for the moment of its renaming.
    void Replace(const fs::path& target)
    {
        while (name_.empty()) {
            fs::path name = HiddenName(folder_);
            if (LinkTo(name)) {
                name_ = std::move(name);
            }
        }
        Check(std::rename(name_.c_str(), target.c_str()) == 0, kCannotReplace);
        name_.clear();
        SyncFolder();
    }

    bool Create(const fs::path& target)
    {
        if (name_.empty()) {
            return LinkTo(target) && SyncFolder();
        }
        const int result =
            ::renameat2(AT_FDCWD, name_.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE);
        Check(result == 0 || errno == EEXIST, kCannotCreate);
        if (result == 0) {
            name_.clear();
        }
        return result == 0 && SyncFolder();
    }

private:
    static constexpr mode_t kMode = 0600;
    static constexpr std::size_t kBufferSize = std::size_t{1} << 16;
    static constexpr const char* kCannotWrite = "cannot be written, what was there is unchanged";
    static constexpr const char* kCannotReplace = "cannot replace the file";
    static constexpr const char* kCannotCreate = "cannot create the file";

    std::string Itself() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

    // False when the name is in use.
    bool LinkTo(const fs::path& name)
    {
        const int result =
            ::linkat(AT_FDCWD, Itself().c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW);
        Check(result == 0 || errno == EEXIST, kCannotCreate);
        return result == 0;
    }

    void OpenWithName()
    {
        Close();
        do {
            name_ = HiddenName(folder_);
            descriptor_ = ::open(name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kMode);
        } while (descriptor_ < 0 && errno == EEXIST);
        if (descriptor_ < 0) {
            name_.clear();
            ThrowSystemError("cannot write into the folder");
        }
    }

    void Close()
    {
        if (descriptor_ >= 0) {
            ::close(std::exchange(descriptor_, -1));
        }
    }

    // Makes the new name durable. Not every file system can; the file is complete either way.
    bool SyncFolder() const
    {
        const int folder = ::open(folder_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (folder >= 0) {
            ::fsync(folder);
            ::close(folder);
        }
        return true;
    }

    void Flush()
    {
        WriteThrough(buffer_.data(), buffer_.size());
        buffer_.clear();
    }

    void WriteThrough(const unsigned char* bytes, std::size_t length)
    {
        while (length > 0) {
            const ssize_t written = ::write(descriptor_, bytes, length);
            if (written < 0 && errno == EINTR) {
                continue;
            }
            Check(written >= 0, kCannotWrite);
            bytes += written;
            length -= static_cast<std::size_t>(written);
        }
    }

    const fs::path folder_;
    int descriptor_;
    fs::path name_;  // hidden; empty while there is none
    std::vector<unsigned char> buffer_;
};

// Hands what QPDF writes on to a sink.
class SinkPipeline final : public Pipeline {
public:
    explicit SinkPipeline(const ByteSink& sink) : Pipeline{"file", nullptr}, sink_{sink} {}

    void write(const unsigned char* bytes, std::size_t length) override { sink_(bytes, length); }
    void finish() override {}

private:
    const ByteSink& sink_;
};

// Permission bits for the new file: those of the one that it replaces, else the process's default.
mode_t ModeFor(const fs::path& target)
{
    struct stat status {};
    if (::stat(target.c_str(), &status) != 0) {
        Check(errno == ENOENT, "cannot write");
        const mode_t mask = ::umask(0);
        ::umask(mask);
        return 0666 & ~mask;
    }
    if (S_ISDIR(status.st_mode)) {
        throw std::runtime_error("it is a folder");
    }
    if (!S_ISREG(status.st_mode)) {
        throw std::runtime_error("it is no file of the disk");
    }
    if ((status.st_mode & 0222) == 0) {
        throw std::runtime_error("it is write-protected");
    }
    return status.st_mode & 0777;
}

// What a chain of symbolic links leads to, whether it is there or not.
fs::path Resolved(fs::path path)
{
    constexpr int kMostLinks = 40;
    std::error_code ignored;
    for (int links = 0; fs::is_symlink(fs::symlink_status(path, ignored)); ++links) {
        if (links == kMostLinks) {
            throw std::runtime_error("it leads from one symbolic link to the next without end");
        }
        path = path.parent_path() / fs::read_symlink(path);
    }
    return path;
}

void Fill(UnfinishedFile& file, const std::function<void(const ByteSink& sink)>& write, mode_t mode)
{
    write([&](const unsigned char* bytes, std::size_t length) { file.Write(bytes, length); });
    file.Complete(mode);
}

}  // namespace

void ReplaceFile(const fs::path& target, const std::function<void(const ByteSink& sink)>& write,
                 const FileHook& onComplete)
{
    const fs::path final = Resolved(fs::absolute(target));
    const mode_t mode = ModeFor(final);
    UnfinishedFile file{final.parent_path()};
    Fill(file, write, mode);
    onComplete(file.Descriptor());
    file.Replace(final);
}

bool CreateFile(const fs::path& target, const std::function<void(const ByteSink& sink)>& write,
                const FileHook& onComplete)
{
    const fs::path final = fs::absolute(target);
    std::error_code ignored;
    if (fs::exists(fs::symlink_status(final, ignored))) {
        return false;
    }
    UnfinishedFile file{final.parent_path()};
    Fill(file, write, 0600);
    onComplete(file.Descriptor());
    return file.Create(final);
}

void ReplaceFile(const fs::path& target, QPDFWriter& writer)
{
    ReplaceFile(target, [&](const ByteSink& sink) {
        SinkPipeline pipeline{sink};
        writer.setOutputPipeline(&pipeline);
        writer.write();
    });
}

}  // namespace Documents
