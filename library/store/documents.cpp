#include "library/store/documents.h"

#include <sys/stat.h>
#include <unistd.h>

#include <boost/interprocess/exceptions.hpp>
#include <utility>

#include "library/store/lockPath.h"
#include "library/store/lockedFile.h"

namespace FW {

std::optional<Documents::Version> Documents::versionOf(const std::string& path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) {
        return std::nullopt;
    }
    return Version{status.st_dev, status.st_ino, status.st_size, status.st_mtim, status.st_ctim};
}

bool Documents::isSame(const Version& one, const Version& other) {
    const auto sameTime = [](const timespec& a, const timespec& b) {
        return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
    };
    return one.device == other.device && one.inode == other.inode && one.size == other.size &&
           sameTime(one.modified, other.modified) && sameTime(one.changed, other.changed);
}

const Documents::Known* Documents::unchanged(const std::string& path) const {
    const auto known = known_.find(path);
    if (known == known_.end()) {
        return nullptr;
    }
    const std::optional<Version> version = versionOf(path);
    return version && isSame(known->second.version, *version) ? &known->second : nullptr;
}

// Whether a file parses does not change with its version; what else can fail may.
LoadResult Documents::readUnlessKnown(const std::string& path) {
    if (const Known* const known = unchanged(path); known != nullptr) {
        return known->result;
    }
    // Taken before the file is read, so that a change in between is noticed the next time.
    const std::optional<Version> version = versionOf(path);
    known_.erase(path);
    ++readings_;
    Json::Value document;
    const LoadResult result = loadLocked(document, path);
    if (result == LoadResult::kLoaded || result == LoadResult::kNotParsed) {
        known_[path] = Known{version.value_or(Version{}), result, std::move(document)};
    }
    return result;
}

const Json::Value* Documents::documentIn(const std::string& path) const {
    const auto known = known_.find(path);
    return known != known_.end() && known->second.result == LoadResult::kLoaded
               ? &known->second.document
               : nullptr;
}

const Json::Value* Documents::load(const std::string& path, LoadResult& result) {
    if (timedOut_.count(path) != 0) {
        // For the line in the log when it cannot be used.
        (void)lockDirectory();
        result = LoadResult::kTimedOut;
    } else {
        result = lockAndLoad([&] { return readUnlessKnown(path); }, path);
    }
    if (result == LoadResult::kTimedOut) {
        timedOut_.insert(path);
    }
    return logLoad(result, path) ? documentIn(path) : nullptr;
}

const Json::Value* Documents::load(const std::string& path) {
    LoadResult result = LoadResult::kMissing;
    return load(path, result);
}

DumpResult Documents::write(const Replacement& replacement, const std::string& path) {
    DumpResult result = DumpResult::kTimedOut;
    if (timedOut_.count(path) != 0) {
        (void)lockDirectory();
    } else {
        result = lockAndDump(replacement, path);
    }
    if (result == DumpResult::kTimedOut) {
        timedOut_.insert(path);
    } else if (result != DumpResult::kRefused) {
        known_.erase(path);
    }
    (void)logDump(result, path);
    return result;
}

bool Documents::dump(const Json::Value& document, const std::string& path) {
    return write([&document] { return &document; }, path) == DumpResult::kWritten;
}

DumpResult Documents::edit(const Editor& editor, const std::string& path) {
    const auto replacement = [&] {
        const LoadResult result = readUnlessKnown(path);
        return editor(result, documentIn(path));
    };
    return write(replacement, path);
}

void Documents::remove(const std::string& path,
                       const std::function<bool(const Json::Value&)>& kept) {
    LockedFile guard;
    bool locked = false;
    try {
        locked = timedOut_.count(path) == 0 && guard.lock(path);
    } catch (const boost::interprocess::interprocess_exception&) {
        // Deleting must not depend on it.
    }
    if (locked && readUnlessKnown(path) == LoadResult::kLoaded && kept(*documentIn(path))) {
        return;
    }
    known_.erase(path);
    (void)unlink(path.c_str());
    if (locked) {
        guard.deleteLockFile();
    } else {
        timedOut_.insert(path);
    }
}

}  // namespace FW
