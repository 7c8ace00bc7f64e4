#include "posix/descriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace posix {

Descriptor::~Descriptor() {
    if (fd_ < 0) {
        return;
    }
    const int saved = errno;
    (void)::close(fd_);
    errno = saved;
}

bool Descriptor::close() noexcept {
    return ::close(release()) == 0;
}

Descriptor aboveStandardStreams(Descriptor fd) noexcept {
    if (!fd || fd.get() > STDERR_FILENO) {
        return fd;
    }
    return Descriptor(fcntl(fd.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

Descriptor openFile(const char* path, int flags, mode_t mode) noexcept {
    return aboveStandardStreams(Descriptor(open(path, flags | O_CLOEXEC, mode)));
}

Descriptor openFile(const std::string& path, int flags, mode_t mode) noexcept {
    return openFile(path.c_str(), flags, mode);
}

Descriptor openFileAt(int directory, const char* name, int flags) noexcept {
    return aboveStandardStreams(Descriptor(openat(directory, name, flags | O_CLOEXEC)));
}

}  // namespace posix
