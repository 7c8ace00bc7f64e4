#include "library/store/profileIndex.h"

#include <glob.h>
#include <sys/stat.h>

#include <algorithm>
#include <utility>

#include "library/logging/log.h"
#include "zamofirewall/lockedJson.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "fwDB";

// The JSON files of the directory in the order of their names; none when it cannot be read.
std::vector<std::string> jsonFiles() {
    const std::string pattern = std::string(kProfileDirectory) + "*" + kProfileExtension;
    glob_t found = {};
    std::vector<std::string> paths;
    // Sorted here, since glob() would sort by the rules of the caller's locale.
    if (glob(pattern.c_str(), GLOB_ERR | GLOB_NOSORT, nullptr, &found) == 0) {
        paths.assign(found.gl_pathv, found.gl_pathv + found.gl_pathc);
    }
    globfree(&found);
    std::sort(paths.begin(), paths.end());
    return paths;
}

std::string baseName(const std::string& path) {
    const std::string name = path.substr(path.rfind('/') + 1);
    return name.substr(0, name.rfind('.'));
}

}  // namespace

std::optional<ProfileIndex::FileVersion> ProfileIndex::versionOf(const std::string& path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) {
        return std::nullopt;
    }
    return FileVersion{
        status.st_dev, status.st_ino, status.st_size, status.st_mtim, status.st_ctim};
}

bool ProfileIndex::isSame(const FileVersion& one, const FileVersion& other) {
    const auto sameTime = [](const timespec& a, const timespec& b) {
        return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
    };
    return one.device == other.device && one.inode == other.inode && one.size == other.size &&
           sameTime(one.modified, other.modified) && sameTime(one.changed, other.changed);
}

bool ProfileIndex::nameIn(const std::string& path, std::optional<std::string>& name) {
    // Taken before the file is read, so that a change in between is not missed the next time.
    const std::optional<FileVersion> version = versionOf(path);
    const auto known = known_.find(path);
    if (known != known_.end() && version && isSame(known->second.version, *version)) {
        name = known->second.name;
        return true;
    }
    Json::Value document;
    if (!jsonFileLoad(document, path)) {
        return false;
    }
    name.reset();
    if (document.isObject() && document["name"].isString()) {
        name = document["name"].asString();
    }
    if (version) {
        known_[path] = Known{*version, name};
    }
    return true;
}

bool ProfileIndex::create(Json::Value& meta) {
    firstUnreadable_.clear();
    const std::vector<std::string> paths = jsonFiles();
    if (paths.empty()) {
        return FW_FAILURE("Fail to read file from %s", kProfileDirectory);
    }
    // Backwards, so that of two files with the same profile name the first one is kept.
    for (auto path = paths.rbegin(); path != paths.rend(); ++path) {
        std::optional<std::string> name;
        if (!nameIn(*path, name)) {
            FW_LOG(LOG_ERR, "Failed to load json from %s", path->c_str());
            firstUnreadable_ = *path;
            continue;
        }
        if (name) {
            Json::Value entry(Json::objectValue);
            entry["fileName"] = baseName(*path);
            meta[*name] = std::move(entry);
        }
    }
    return true;
}

bool ProfileIndex::createForUse(Json::Value& meta) {
    if (!create(meta)) {
        return FW_FAILURE("Failed to create meta json from /usr/zamo/etc/firewall.d/");
    }
    return true;
}

std::string ProfileIndex::pathOf(const std::string& name) {
    Json::Value meta;
    if (!createForUse(meta) || !meta.isMember(name)) {
        return {};
    }
    return profilePath(meta[name]);
}

std::string profilePath(const Json::Value& entry) {
    return kProfileDirectory + entry["fileName"].asString() + kProfileExtension;
}

}  // namespace FW
