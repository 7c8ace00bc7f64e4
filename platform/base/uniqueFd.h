#ifndef PLATFORM_BASE_UNIQUEFD_H
#define PLATFORM_BASE_UNIQUEFD_H

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace zamo {

// Owns a descriptor. Closing it never changes errno, so that a failure's cause survives.
class UniqueFd {
  public:
    UniqueFd() = default;
    explicit UniqueFd(int fd) noexcept : fd_(fd) {}
    UniqueFd(UniqueFd&& other) noexcept : fd_(other.release()) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept {
        std::swap(fd_, other.fd_);
        return *this;
    }
    ~UniqueFd() {
        if (fd_ < 0) return;
        const int saved = errno;
        (void)close(fd_);
        errno = saved;
    }

    explicit operator bool() const noexcept { return fd_ >= 0; }
    [[nodiscard]] int get() const noexcept { return fd_; }
    [[nodiscard]] int release() noexcept { return std::exchange(fd_, -1); }

  private:
    int fd_ = -1;
};

// A caller may have closed 0, 1 or 2; a file that took such a number would receive what others
// print. Empty, with errno set, when the descriptor cannot be moved.
[[nodiscard]] inline UniqueFd moveAboveStandardStreams(UniqueFd fd) noexcept {
    if (!fd || fd.get() > STDERR_FILENO) return fd;
    return UniqueFd(fcntl(fd.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

}  // namespace zamo

#endif
