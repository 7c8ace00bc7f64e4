#include "library/store/jsonFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "library/logging/log.h"
#include "library/store/jsonText.h"
#include "library/store/lockedFile.h"
#include "posix/file.h"
#include "zamofirewall/lockedJson.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "utils";
constexpr mode_t kDataFileMode = 0644;
constexpr std::size_t kMaxFileSize = 64U << 20U;
constexpr std::size_t kChunkSize = 64U << 10U;

bool exists(const std::string& path) {
    return access(path.c_str(), F_OK) == 0;
}

std::string temporaryOf(const std::string& path) {
    return path + ".tmp";
}

// A directory or a FIFO at the place of the file is not a document, and does not become one.
LoadResult read(const posix::Descriptor& file, std::string& text) {
    ssize_t count = 1;
    while (count > 0 && text.size() <= kMaxFileSize) {
        const std::size_t size = text.size();
        text.resize(size + kChunkSize);
        do {
            count = ::read(file.get(), &text[size], kChunkSize);
        } while (count < 0 && errno == EINTR);
        text.resize(size + static_cast<std::size_t>(count > 0 ? count : 0));
    }
    if (count < 0) {
        return errno == EIO || errno == ENOMEM ? LoadResult::kNotRead : LoadResult::kNotParsed;
    }
    return count == 0 ? LoadResult::kLoaded : LoadResult::kNotParsed;
}

// The text must be on the disk before the rename: after a power cut the file is the old one or the
// new one, not an empty one.
bool writeNewFile(const std::string& path, posix::Descriptor file, const std::string& text) {
    const bool written = posix::writeWhole(file.get(), text) && fsync(file.get()) == 0;
    if (file.close() && written) {
        return true;
    }
    // It would keep a full disk full.
    (void)unlink(path.c_str());
    return false;
}

DumpResult dumpLocked(const std::string& text, const std::string& path) {
    const std::string temporary = temporaryOf(path);
    posix::Descriptor file =
        posix::openFile(path.empty() ? path : temporary,
                        O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY,
                        kDataFileMode);
    if (!file) {
        return DumpResult::kNotOpened;
    }
    // A text that could not be written whole must not replace the file either.
    if (!writeNewFile(temporary, std::move(file), text) ||
        rename(temporary.c_str(), path.c_str()) != 0) {
        return DumpResult::kNotReplaced;
    }
    return DumpResult::kWritten;
}

}  // namespace

bool isPassing(LoadResult result) {
    return result == LoadResult::kTimedOut || result == LoadResult::kNotOpened ||
           result == LoadResult::kNotRead;
}

LoadResult loadLocked(Json::Value& value, const std::string& path) {
    const posix::Descriptor file = posix::openFile(path, O_RDONLY | O_NONBLOCK | O_NOCTTY);
    if (!file) {
        return errno == ENOENT ? LoadResult::kVanished : LoadResult::kNotOpened;
    }
    std::string text;
    const LoadResult result = read(file, text);
    if (result == LoadResult::kLoaded && !parseJson(text, value)) {
        return LoadResult::kNotParsed;
    }
    return result;
}

LoadResult lockAndLoad(const Loader& loader, const std::string& path) {
    if (!exists(path)) {
        return LoadResult::kMissing;
    }
    LockedFile guard;
    if (!guard.lock(path)) {
        return LoadResult::kTimedOut;
    }
    const LoadResult result = loader();
    if (result == LoadResult::kVanished) {
        guard.deleteLockFile();
    }
    return result;
}

bool logLoad(LoadResult result, const std::string& path) {
    switch (result) {
        case LoadResult::kLoaded:
            return true;
        case LoadResult::kMissing:
            return FW_FAILURE("File %s does not exist", path.c_str());
        case LoadResult::kTimedOut:
            return FW_FAILURE("Failed to get lock timeout");
        case LoadResult::kVanished:
        case LoadResult::kNotOpened:
            return FW_FAILURE("Failed to open json file %s", path.c_str());
        case LoadResult::kNotRead:
        case LoadResult::kNotParsed:
            break;
    }
    return FW_FAILURE("Failed to parse Json value of %s", path.c_str());
}

DumpResult lockAndDump(const Replacement& replacement, const std::string& path) {
    LockedFile guard;
    if (!guard.lock(path)) {
        return DumpResult::kTimedOut;
    }
    const Json::Value* const document = replacement();
    const DumpResult result =
        document == nullptr ? DumpResult::kRefused : dumpLocked(renderJson(*document), path);
    if (result != DumpResult::kWritten && !exists(path)) {
        guard.deleteLockFile();
    }
    return result;
}

bool logDump(DumpResult result, const std::string& path) {
    switch (result) {
        case DumpResult::kWritten:
            return true;
        case DumpResult::kRefused:
            return false;
        case DumpResult::kTimedOut:
            return FW_FAILURE("Failed to get lock timeout");
        case DumpResult::kNotOpened:
            return FW_FAILURE("Failed to open json file %s", temporaryOf(path).c_str());
        case DumpResult::kNotReplaced:
            break;
    }
    return FW_FAILURE("Failed to rename to %s", path.c_str());
}

bool jsonFileLoad(Json::Value& value, const std::string& path) {
    return logLoad(lockAndLoad([&] { return loadLocked(value, path); }, path), path);
}

bool jsonFileDump(const Json::Value& value, const std::string& path) {
    return logDump(lockAndDump([&value] { return &value; }, path), path);
}

}  // namespace FW
