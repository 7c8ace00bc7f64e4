#include "command/answers/fileReplacement.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>

#include "command/console.h"
#include "command/words/quoting.h"
#include "posix/descriptor.h"
#include "posix/file.h"

namespace zamofw {
namespace {

constexpr mode_t kPrivate = 0600;
// As many as the kernel follows.
constexpr int kMostLinks = 40;
constexpr int kMostTemporaries = 100;

[[noreturn]] void notWritten(const std::string& path, const std::string& why) {
    failed(shown(path) + " cannot be written: " + why,
           "name a file in another directory, or - for standard output");
}

posix::Descriptor openDirectoryAt(int directory, const char* name) {
    return posix::aboveStandardStreams(
        posix::Descriptor(openat(directory, name, O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC)));
}

bool isForEverybody(int directory) {
    struct stat status = {};
    return fstat(directory, &status) != 0 || (status.st_mode & S_IWOTH) != 0;
}

std::string targetOf(int directory, const std::string& name) {
    std::array<char, PATH_MAX> target = {};
    const ssize_t size = readlinkat(directory, name.c_str(), target.data(), target.size());
    return size > 0 ? std::string(target.data(), static_cast<std::size_t>(size)) : "";
}

// Opens the directories of a path one by one.
class Walk {
  public:
    explicit Walk(const std::string& path) : path_(path) {}

    posix::Descriptor open(const std::string& directory) {
        rest_ = directory;
        start();
        while (at_ && !rest_.empty()) {
            const std::size_t slash = rest_.find('/');
            const std::string name = rest_.substr(0, slash);
            rest_.erase(0, slash == std::string::npos ? slash : slash + 1);
            if (!name.empty()) {
                step(name);
            }
        }
        if (!at_) {
            notWritten(path_, std::strerror(errno));
        }
        return std::move(at_);
    }

  private:
    void start() { at_ = openDirectoryAt(AT_FDCWD, rest_.front() == '/' ? "/" : "."); }

    void step(const std::string& name) {
        struct stat status = {};
        if (fstatat(at_.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
            const bool isMissing = errno == ENOENT;
            notWritten(path_,
                       isMissing ? "there is no directory " + shown(name) : std::strerror(errno));
        }
        if (!S_ISLNK(status.st_mode)) {
            at_ = openDirectoryAt(at_.get(), name.c_str());
            return;
        }
        if (isForEverybody(at_.get())) {
            notWritten(path_,
                       shown(name) +
                           " is a symbolic link in a directory that everybody may write "
                           "to");
        }
        const std::string target = targetOf(at_.get(), name);
        if (target.empty() || ++links_ > kMostLinks) {
            notWritten(path_, std::strerror(ELOOP));
        }
        rest_ = target + "/" + rest_;
        if (target.front() == '/') {
            start();
        }
    }

    const std::string& path_;
    std::string rest_;
    posix::Descriptor at_;
    int links_ = 0;
};

// Only a plain file is replaced: the name of a device or a link would be lost.
void requirePlainFile(const std::string& path, int directory, const std::string& name) {
    struct stat status = {};
    if (fstatat(directory, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
        !S_ISREG(status.st_mode)) {
        notWritten(path,
                   S_ISDIR(status.st_mode)   ? "it is a directory"
                   : S_ISLNK(status.st_mode) ? "it is a symbolic link"
                                             : "it is no plain file");
    }
}

struct Temporary {
    posix::Descriptor file;
    std::string name;
};

Temporary makeTemporary(int directory) {
    for (int i = 0; i < kMostTemporaries; ++i) {
        std::string name = ".zamofw-" + std::to_string(getpid()) + "-" + std::to_string(i) + ".tmp";
        posix::Descriptor file = posix::aboveStandardStreams(
            posix::Descriptor(openat(directory,
                                     name.c_str(),
                                     O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                                     kPrivate)));
        if (file || errno != EEXIST) {
            return {std::move(file), std::move(name)};
        }
    }
    return {};
}

}  // namespace

void replaceFile(const std::string& path, const std::string& text) {
    const std::size_t slash = path.rfind('/');
    const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    if (name.empty() || name == "." || name == "..") {
        wrongUse(shown(path) + " is no name of a file", "say one: report.html");
    }
    const posix::Descriptor directory =
        Walk(path).open(slash == std::string::npos ? "." : path.substr(0, slash + 1));
    requirePlainFile(path, directory.get(), name);
    Temporary temporary = makeTemporary(directory.get());
    if (!temporary.file) {
        notWritten(path, std::strerror(errno));
    }
    // The text must be on the disk before it takes the name.
    if (posix::writeWhole(temporary.file.get(), text) && fsync(temporary.file.get()) == 0 &&
        temporary.file.close() &&
        renameat(directory.get(), temporary.name.c_str(), directory.get(), name.c_str()) == 0) {
        return;
    }
    const int error = errno;
    (void)unlinkat(directory.get(), temporary.name.c_str(), 0);
    notWritten(path, std::strerror(error));
}

}  // namespace zamofw
