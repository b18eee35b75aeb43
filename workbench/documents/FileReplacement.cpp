#include "documents/FileReplacement.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <qpdf/Pipeline.hh>
#include <qpdf/QPDFWriter.hh>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
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

// The file beside the target; removed unless it was renamed. Written without the C library's
// streams, which forget a write that failed once a later one fits their buffer.
class NeighbourFile {
public:
    explicit NeighbourFile(const fs::path& target)
        : name_{(target.parent_path() / ("." + target.filename().string() + ".XXXXXX")).string()},
          descriptor_{::mkostemp(name_.data(), O_CLOEXEC)}
    {
        Check(descriptor_ >= 0, "cannot write into the folder");
        buffer_.reserve(kBufferSize);
    }
    NeighbourFile(const NeighbourFile&) = delete;
    NeighbourFile& operator=(const NeighbourFile&) = delete;
    ~NeighbourFile()
    {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
        }
        if (!renamed_) {
            ::unlink(name_.c_str());
        }
    }

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
        Check(::fsync(descriptor_) == 0, kCannotWrite);
        Check(::fchmod(descriptor_, mode) == 0, "cannot set the permissions");
        Check(::close(std::exchange(descriptor_, -1)) == 0, kCannotWrite);
    }

    void RenameTo(const fs::path& target)
    {
        Check(std::rename(name_.c_str(), target.c_str()) == 0, "cannot replace the file");
        renamed_ = true;
    }

private:
    static constexpr std::size_t kBufferSize = std::size_t{1} << 16;
    static constexpr const char* kCannotWrite = "cannot be written, what was there is unchanged";

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

    std::string name_;
    int descriptor_;
    std::vector<unsigned char> buffer_;
    bool renamed_ = false;
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

// Makes the renaming itself durable. Not every file system can; the file is complete either way.
void SyncFolder(const fs::path& folder)
{
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        ::fsync(descriptor);
        ::close(descriptor);
    }
}

}  // namespace

void ReplaceFile(const fs::path& target, const std::function<void(const ByteSink& sink)>& write)
{
    fs::path final = fs::absolute(target);
    std::error_code ignored;
    if (fs::is_symlink(fs::symlink_status(final, ignored))) {
        final = fs::weakly_canonical(final);
    }
    const mode_t mode = ModeFor(final);
    NeighbourFile neighbour{final};
    write([&](const unsigned char* bytes, std::size_t length) { neighbour.Write(bytes, length); });
    neighbour.Complete(mode);
    neighbour.RenameTo(final);
    SyncFolder(final.parent_path());
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
