#include "platform/sdk/pluginFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "platform/base/textFile.h"
#include "posix/file.h"

namespace zamo {
namespace {

enum class FileKind { kPlugin, kNoPlugin, kRefused };

// A file that another user could have created or changed must not run with our rights.
bool isSafe(const struct stat& properties) {
    const bool ours = properties.st_uid == 0 || properties.st_uid == geteuid();
    return ours && (properties.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

FileKind classify(int directory, const char* name) {
    struct stat target = {};
    constexpr mode_t kExecutable = S_IXUSR | S_IXGRP | S_IXOTH;
    if (fstatat(directory, name, &target, 0) != 0) {
        return FileKind::kNoPlugin;
    }
    if (!S_ISREG(target.st_mode) || (target.st_mode & kExecutable) == 0) {
        return FileKind::kNoPlugin;
    }

    struct stat entry = {};
    if (fstatat(directory, name, &entry, AT_SYMLINK_NOFOLLOW) != 0) {
        return FileKind::kNoPlugin;
    }
    const bool foreignLink = S_ISLNK(entry.st_mode) && isWritableByAll(directory);
    return isSafe(target) && !foreignLink ? FileKind::kPlugin : FileKind::kRefused;
}

void addEntry(const std::string& path, int directory, const char* name, PluginFiles& files) {
    const FileKind kind = classify(directory, name);
    if (kind == FileKind::kPlugin) {
        files.runnable.insert(name);
    }
    if (kind != FileKind::kRefused) {
        return;
    }
    files.complete = false;
    syslog(
        LOG_ERR,
        "zamosdk: plug-in %s/%s is refused: its owner is neither root nor this user, or others may write to it",
        path.c_str(),
        name);
}

}  // namespace

PluginFiles findPlugins(const std::string& directory) {
    PluginFiles files;
    const posix::DirectoryPtr opened = posix::openDirectory(directory);
    if (opened == nullptr) {
        files.complete = errno == ENOENT;
        if (!files.complete) {
            syslog(LOG_ERR,
                   "zamosdk: plug-ins in %s cannot be read: %s",
                   directory.c_str(),
                   std::strerror(errno));
        }
        return files;
    }
    for (const dirent* entry = readdir(opened.get()); entry != nullptr;
         entry = readdir(opened.get())) {
        addEntry(directory, dirfd(opened.get()), entry->d_name, files);
    }
    return files;
}

}  // namespace zamo
