#include "library/store/jsonFile.h"

#include <fcntl.h>
#include <json/reader.h>
#include <json/writer.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "library/logging/log.h"
#include "library/store/lockedFile.h"
#include "posix/file.h"
#include "zamofirewall/lockedJson.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "utils";
constexpr mode_t kDataFileMode = 0644;
constexpr std::size_t kMaxFileSize = 64U << 20U;
constexpr std::size_t kChunkSize = 64U << 10U;

// What a directory or a file that is too large yields does not parse.
std::string readAndClose(int descriptor) {
    std::string text;
    ssize_t count = 1;
    while (count > 0 && text.size() <= kMaxFileSize) {
        const std::size_t size = text.size();
        text.resize(size + kChunkSize);
        do {
            count = read(descriptor, &text[size], kChunkSize);
        } while (count < 0 && errno == EINTR);
        text.resize(size + static_cast<std::size_t>(count > 0 ? count : 0));
    }
    (void)close(descriptor);
    return count == 0 ? text : std::string();
}

// The parser throws, rather than fail, when the nesting is deeper than it takes.
bool parse(const std::string& text, Json::Value& value) {
    try {
        return Json::Reader().parse(text, value, /*collectComments=*/true);
    } catch (const Json::Exception&) {
        return false;
    }
}

int createFile(const std::string& path) {
    return open(path.c_str(),
                O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK,
                kDataFileMode);
}

// The text must be on the disk before the rename: after a power cut the file is the old one or the
// new one, not an empty one.
bool writeAndClose(int descriptor, const std::string& text) {
    const bool written = posix::writeWhole(descriptor, text) && fsync(descriptor) == 0;
    return close(descriptor) == 0 && written;
}

}  // namespace

bool jsonFileLoad(Json::Value& value, const std::string& path) {
    if (access(path.c_str(), F_OK) != 0) {
        return FW_FAILURE("File %s does not exist", path.c_str());
    }
    LockedFile guard;
    if (!guard.lock(path)) {
        return false;
    }
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) {
        return FW_FAILURE("Failed to open json file %s", path.c_str());
    }
    if (!parse(readAndClose(descriptor), value)) {
        return FW_FAILURE("Failed to parse Json value of %s", path.c_str());
    }
    return true;
}

bool jsonFileDump(const Json::Value& value, const std::string& path) {
    LockedFile guard;
    if (!guard.lock(path)) {
        return false;
    }
    const std::string temporary = path + ".tmp";
    const int descriptor = path.empty() ? -1 : createFile(temporary);
    if (descriptor < 0) {
        return FW_FAILURE("Failed to open json file %s", temporary.c_str());
    }
    // A text that could not be written whole must not replace the file either.
    if (!writeAndClose(descriptor, Json::StyledWriter().write(value)) ||
        rename(temporary.c_str(), path.c_str()) != 0) {
        return FW_FAILURE("Failed to rename to %s", path.c_str());
    }
    return true;
}

bool isObjectOrNull(const Json::Value& value) {
    return value.isObject() || value.isNull();
}

bool jsonObjectLoad(Json::Value& value, const std::string& path) {
    if (!jsonFileLoad(value, path)) {
        return false;
    }
    if (!isObjectOrNull(value)) {
        return FW_FAILURE("Failed to parse Json value of %s", path.c_str());
    }
    return true;
}

}  // namespace FW
