#include "platform/core/replaceFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "posix/descriptor.h"
#include "posix/file.h"

namespace zamo {
namespace {

constexpr mode_t kNewFileMode = 0644;
constexpr mode_t kModeBits = 07777;

// A new file beside its target, with an unpredictable name. It is deleted unless it is published.
class TemporaryFile {
  public:
    explicit TemporaryFile(const std::string& target)
        : path_(target + ".XXXXXX"), fd_(mkostemp(path_.data(), O_CLOEXEC)), exists_(fd_) {
        fd_ = posix::aboveStandardStreams(std::move(fd_));
    }
    ~TemporaryFile() {
        if (!exists_) {
            return;
        }
        const int saved = errno;
        (void)unlink(path_.c_str());
        errno = saved;
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    explicit operator bool() const { return static_cast<bool>(fd_); }

    bool write(std::string_view text) { return posix::writeWhole(fd_.get(), text); }

    bool takeOver(const struct stat& previous) {
        struct stat own = {};
        if (fstat(fd_.get(), &own) != 0) {
            return false;
        }
        const bool sameOwner = own.st_uid == previous.st_uid && own.st_gid == previous.st_gid;
        // The owner first: changing it may clear mode bits.
        if (!sameOwner && fchown(fd_.get(), previous.st_uid, previous.st_gid) != 0) {
            return false;
        }
        return setMode(previous.st_mode & kModeBits);
    }

    bool setMode(mode_t mode) { return fchmod(fd_.get(), mode) == 0; }

    bool publish(const std::string& target) {
        // Some file systems report a full disk only here.
        if (!fd_.close() || rename(path_.c_str(), target.c_str()) != 0) {
            return false;
        }
        exists_ = false;
        return true;
    }

  private:
    std::string path_;
    posix::Descriptor fd_;
    bool exists_;
};

}  // namespace

bool replaceFile(const std::string& path, std::string_view text, const struct stat* previous) {
    TemporaryFile file(path);
    return file && file.write(text) &&
           (previous != nullptr ? file.takeOver(*previous) : file.setMode(kNewFileMode)) &&
           file.publish(path);
}

}  // namespace zamo
