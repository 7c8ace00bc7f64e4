#include <zamo/sdk.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <exception>
#include <string>
#include <utility>

#include "platform/base/export.h"
#include "platform/base/textFile.h"
#include "posix/descriptor.h"

namespace {

// The owner needs these rights on a parent to create something inside it.
constexpr mode_t kParentMode = 0300;

// In a world-writable directory, a symbolic link could lead anywhere.
posix::Descriptor openSubdirectory(const posix::Descriptor& parent, const char* name) {
    const int noLink = zamo::isWritableByAll(parent.get()) ? O_NOFOLLOW : 0;
    return posix::openFileAt(parent.get(), name, O_PATH | O_DIRECTORY | noLink);
}

posix::Descriptor enterOrCreate(const posix::Descriptor& parent, const char* name, mode_t mode) {
    posix::Descriptor found = openSubdirectory(parent, name);
    if (found || errno != ENOENT) {
        return found;
    }
    if (mkdirat(parent.get(), name, mode) != 0 && errno != EEXIST) {
        return posix::Descriptor();
    }
    return openSubdirectory(parent, name);
}

// Removes the next component, with the slashes around it, from `path`.
std::string takeComponent(std::string& path) {
    path.erase(0, path.find_first_not_of('/'));
    std::string component = path.substr(0, path.find('/'));
    path.erase(0, component.size());
    path.erase(0, path.find_first_not_of('/'));
    return component;
}

bool makeDirectories(std::string path, mode_t mode) {
    const char* start = path.front() == '/' ? "/" : ".";
    posix::Descriptor current = posix::openFile(start, O_PATH | O_DIRECTORY);
    while (current && !path.empty()) {
        const std::string name = takeComponent(path);
        if (name.empty()) {
            break;
        }
        current = enterOrCreate(current, name.c_str(), path.empty() ? mode : mode | kParentMode);
    }
    return static_cast<bool>(current);
}

}  // namespace

ZAMO_EXPORT int ZAMOFSMkdirP(const char* path, unsigned mode) try {
    if (path == nullptr || !*path) {
        errno = path != nullptr ? ENOENT : EINVAL;
        return -1;
    }
    return makeDirectories(path, static_cast<mode_t>(mode)) ? 0 : -1;
} catch (const std::exception&) {
    errno = ENOMEM;
    return -1;
}
