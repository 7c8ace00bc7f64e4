#include <zamo/core.h>

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>
#include <optional>
#include <string>
#include <string_view>

#include "platform/base/export.h"
#include "platform/base/fail.h"
#include "platform/base/textFile.h"
#include "platform/core/keyValueText.h"
#include "platform/core/replaceFile.h"

namespace {

using zamo::ReadResult;

constexpr const char* kFeatureFile = "/etc.defaults/zamoinfo.conf";

bool isReadable(ReadResult result) {
    return result == ReadResult::kDone || result == ReadResult::kMissing;
}

bool holdsValue(const char* path, const char* key, std::string_view value) {
    zamo::TextFile file;
    if (zamo::readTextFile(path, file) != ReadResult::kDone) {
        return false;
    }
    return zamo::findValue(file.text, zamo::trimBlanks(key)) == value;
}

int copyOut(const std::optional<std::string>& found, char* value, int size) {
    const std::size_t room = static_cast<std::size_t>(size) - 1;
    const std::size_t length = found ? std::min(found->size(), room) : 0;
    if (length > 0) {
        memcpy(value, found->data(), length);
    }
    value[length] = '\0';
    return static_cast<int>(length);
}

int store(const std::string& path, std::string_view key, std::string_view value) {
    zamo::TextFile old;
    const ReadResult read = zamo::readTextFile(path, old);
    if (read == ReadResult::kFailed) {
        return ZAMO_FAIL(ZAMO_ERR_SYSTEM);
    }

    const std::string text = zamo::withValue(old.text, key, value);
    if (text.size() > zamo::kTextFileLimit) {
        return ZAMO_FAIL(ZAMO_ERR_BAD_PARAMETERS);
    }
    // Neither the lines nor the owner of an untrusted file are kept.
    const struct stat* previous = read == ReadResult::kDone ? &old.properties : nullptr;
    return zamo::replaceFile(path, text, previous) ? 0 : ZAMO_FAIL(ZAMO_ERR_SYSTEM);
}

}  // namespace

ZAMO_EXPORT int VLIBCFileGetKeyValue(
    const char* file, const char* key, char* value, int size, int /*flags*/) try {
    if (file == nullptr || key == nullptr || value == nullptr || size <= 0) {
        return ZAMO_FAIL(ZAMO_ERR_BAD_PARAMETERS);
    }
    zamo::TextFile content;
    if (!isReadable(zamo::readTextFile(file, content))) {
        return ZAMO_FAIL(ZAMO_ERR_SYSTEM);
    }
    return copyOut(zamo::findValue(content.text, zamo::trimBlanks(key)), value, size);
} catch (const std::exception&) {
    return ZAMO_FAIL(ZAMO_ERR_NO_MEMORY);
}

ZAMO_EXPORT int VLIBCFileSetKeyValue(const char* file,
                                     const char* key,
                                     const char* value,
                                     int /*flags*/) try {
    if (file == nullptr || key == nullptr || value == nullptr) {
        return ZAMO_FAIL(ZAMO_ERR_BAD_PARAMETERS);
    }
    const std::string_view name = zamo::trimBlanks(key);
    if (!zamo::isStorable(name, value)) {
        return ZAMO_FAIL(ZAMO_ERR_BAD_PARAMETERS);
    }
    return store(file, name, value);
} catch (const std::exception&) {
    return ZAMO_FAIL(ZAMO_ERR_NO_MEMORY);
}

ZAMO_EXPORT int VLIBCFileCheckKeyValue(const char* file,
                                       const char* key,
                                       const char* value,
                                       int /*flags*/) try {
    return file != nullptr && key != nullptr && value != nullptr && holdsValue(file, key, value)
               ? 1
               : 0;
} catch (const std::exception&) {
    return 0;
}

ZAMO_EXPORT int VLIBCFileExist(const char* file) {
    struct stat properties = {};
    return file != nullptr && stat(file, &properties) == 0 ? 1 : 0;
}

ZAMO_EXPORT int VLIBCSupportGet(const char* feature) try {
    return feature != nullptr && holdsValue(kFeatureFile, feature, "yes") ? 1 : 0;
} catch (const std::exception&) {
    return 0;
}
