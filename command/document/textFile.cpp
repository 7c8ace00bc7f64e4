#include "command/document/textFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "command/console.h"
#include "posix/descriptor.h"

namespace zamofw {
namespace {

// The library reads no larger file.
constexpr std::size_t kMaxSize = 64U << 20U;
constexpr std::size_t kChunkSize = 64U << 10U;

// One chunk behind the text; its size, or negative with errno set.
ssize_t readChunk(int fd, std::size_t chunkSize, std::string& text) {
    const std::size_t size = text.size();
    text.resize(size + chunkSize);
    ssize_t count = 0;
    do {
        count = read(fd, &text[size], chunkSize);
    } while (count < 0 && errno == EINTR);
    text.resize(size + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    return count;
}

bool readWhole(int fd, std::string& text) {
    // A plain file comes in one piece; it may grow in the meantime, and a pipe has no size.
    struct stat status = {};
    if (fstat(fd, &status) != 0) {
        return false;
    }
    std::size_t chunkSize = kChunkSize;
    if (S_ISREG(status.st_mode) && status.st_size > 0) {
        chunkSize = std::min(static_cast<std::size_t>(status.st_size), kMaxSize) + 1;
        // The read that finds the end must not make the text move.
        text.reserve(chunkSize + kChunkSize);
    }
    ssize_t count = 1;
    while (count > 0 && text.size() <= kMaxSize) {
        count = readChunk(fd, chunkSize, text);
        chunkSize = kChunkSize;
    }
    if (count > 0) {
        errno = EFBIG;
    }
    return count == 0;
}

std::string remedyFor(int error) {
    switch (error) {
        case ENOENT:
        case ENOTDIR:
            return "check the path; it is looked up from the current directory";
        case EISDIR:
            return "name the file in it";
        case EFBIG:
            return "a document has at most 64 MiB";
        default:
            return "";
    }
}

}  // namespace

bool readTextQuietly(const std::string& path, std::string& text) {
    text.clear();
    if (path == kStandardStream) {
        return readWhole(STDIN_FILENO, text);
    }
    const posix::Descriptor file = posix::openFile(path, O_RDONLY | O_NOCTTY);
    return static_cast<bool>(file) && readWhole(file.get(), text);
}

std::string readText(const std::string& path) {
    std::string text;
    if (readTextQuietly(path, text)) {
        return text;
    }
    const int error = errno;
    const std::string what = "cannot read " +
                             (path == kStandardStream ? std::string("standard input") : path) +
                             ": " + std::strerror(error);
    if (error == EACCES && geteuid() != 0) {
        throw Failure(Status::kNotPermitted, what, "run it as root, for instance with sudo");
    }
    failed(what, remedyFor(error));
}

}  // namespace zamofw
