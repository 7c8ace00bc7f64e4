// Reading and writing a JSON file under its lock, without a line in the log.
#ifndef LIBRARY_STORE_JSONFILE_H
#define LIBRARY_STORE_JSONFILE_H

#include <json/value.h>

#include <functional>
#include <string>

#include "library/store/jsonText.h"

namespace FW {

enum class LoadResult {
    kLoaded,
    kMissing,
    kTimedOut,   // the lock was not acquired in time
    kVanished,   // deleted while we waited for its lock
    kNotOpened,  // no descriptor left, for example
    kNotRead,    // an input error, for example
    kNotParsed,
};

// Whether the file may be all right, and is only unreadable now.
[[nodiscard]] bool isPassing(LoadResult result);

// For a caller that holds the lock. The value is undefined unless it was loaded.
[[nodiscard]] LoadResult loadLocked(Json::Value& value, const std::string& path);

// Called while the lock is held.
using Loader = std::function<LoadResult()>;

// jsonFileLoad() by a loader of the caller's, without its line in the log.
[[nodiscard]] LoadResult lockAndLoad(const Loader& loader, const std::string& path);

// Writes what jsonFileLoad() writes to the log for the result. Returns whether it was loaded.
bool logLoad(LoadResult result, const std::string& path);

enum class DumpResult {
    kWritten,
    kRefused,  // by the caller
    kTimedOut,
    kNotOpened,
    kNotReplaced,
};

// Asked while the lock is held: the document to be written, or null to leave the file as it is.
using Replacement = std::function<const Json::Value*()>;

// jsonFileDump() without its line in the log.
[[nodiscard]] DumpResult lockAndDump(const Replacement& replacement, const std::string& path);

// Writes what jsonFileDump() writes to the log for the result. Returns whether it was written.
bool logDump(DumpResult result, const std::string& path);

}  // namespace FW

#endif
