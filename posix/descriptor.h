// A file descriptor that is closed at the end of its scope.
#ifndef POSIX_DESCRIPTOR_H
#define POSIX_DESCRIPTOR_H

#include <sys/types.h>

#include <string>
#include <utility>

namespace posix {

// Owns a descriptor. Closing it never changes errno, so that a failure's cause survives.
class Descriptor {
  public:
    Descriptor() = default;
    explicit Descriptor(int fd) noexcept : fd_(fd) {}
    Descriptor(Descriptor&& other) noexcept : fd_(other.release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(fd_, other.fd_);
        return *this;
    }
    ~Descriptor();

    explicit operator bool() const noexcept { return fd_ >= 0; }
    [[nodiscard]] int get() const noexcept { return fd_; }
    [[nodiscard]] int release() noexcept { return std::exchange(fd_, -1); }

    // Closes it now; false when close() reports an error, as some file systems do for a full disk.
    [[nodiscard]] bool close() noexcept;

  private:
    int fd_ = -1;
};

// The caller of a library may have closed 0, 1 or 2. A file that took such a number would receive
// what others print, so a new descriptor is moved above them. Empty, with errno set, when it cannot
// be moved.
[[nodiscard]] Descriptor aboveStandardStreams(Descriptor fd) noexcept;

// open() with O_CLOEXEC, never on a standard stream's number. Empty, with errno set, on failure.
[[nodiscard]] Descriptor openFile(const char* path, int flags, mode_t mode = 0) noexcept;
[[nodiscard]] Descriptor openFile(const std::string& path, int flags, mode_t mode = 0) noexcept;

// The same for a name in an open directory.
[[nodiscard]] Descriptor openFileAt(int directory, const char* name, int flags) noexcept;

}  // namespace posix

#endif
