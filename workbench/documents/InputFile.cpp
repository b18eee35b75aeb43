#include "documents/InputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace Documents {

namespace {

// Opened without waiting for a pipe's other end; what was opened is then looked at, and not what
// the path leads to at another moment.
class Input {
public:
    explicit Input(const std::filesystem::path& path)
        : descriptor_{::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)}
    {
        if (descriptor_ < 0 && errno == ENXIO) {
            throw std::runtime_error(kNoFile);  // a socket
        }
        Check(descriptor_ >= 0);
        Check(::fstat(descriptor_, &status_) == 0);
    }
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;
    ~Input()
    {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
        }
    }

    const struct stat& RequireFile() const
    {
        if (S_ISDIR(status_.st_mode)) {
            throw std::runtime_error("it is a folder");
        }
        if (!S_ISREG(status_.st_mode)) {
            throw std::runtime_error(kNoFile);
        }
        return status_;
    }

    // Number of bytes, 0 at the end.
    std::size_t Read(char* bytes, std::size_t most)
    {
        ssize_t count = 0;
        while ((count = ::read(descriptor_, bytes, most)) < 0 && errno == EINTR) {}
        Check(count >= 0);
        return static_cast<std::size_t>(count);
    }

private:
    static constexpr const char* kNoFile = "it is a device, pipe or socket and no file of the disk";

    static void Check(bool succeeded)
    {
        if (!succeeded) {
            throw std::runtime_error(std::generic_category().message(errno));
        }
    }

    int descriptor_;
    struct stat status_ {};
};

void RequireSize(std::size_t size)
{
    if (size > kMostFileBytes) {
        throw std::runtime_error("it is larger than " + std::to_string(kMostFileBytes >> 20) +
                                 " MiB");
    }
}

}  // namespace

InputFile ReadInputFile(const std::filesystem::path& path)
{
    Input input{path};
    const struct stat& status = input.RequireFile();
    RequireSize(static_cast<std::size_t>(status.st_size));
    // One byte more than the file is said to have, so that its end is met in the first round.
    std::string bytes(static_cast<std::size_t>(status.st_size) + 1, '\0');
    std::size_t length = 0;
    while (const std::size_t count = input.Read(bytes.data() + length, bytes.size() - length)) {
        length += count;
        RequireSize(length);
        if (length == bytes.size()) {
            bytes.resize(std::min(2 * bytes.size(), kMostFileBytes + 1));
        }
    }
    bytes.resize(length);
    return {std::move(bytes), (status.st_mode & 0222) == 0};
}

}  // namespace Documents
