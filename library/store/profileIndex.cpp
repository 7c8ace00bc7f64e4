#include "library/store/profileIndex.h"

#include <glob.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "library/logging/log.h"
#include "library/model/names.h"
#include "library/store/fileName.h"
#include "library/store/jsonText.h"
#include "library/store/lockPath.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "fwDB";

// The JSON files of the directory in the order of their names; none when it cannot be read.
std::vector<std::string> jsonFiles() {
    const std::string pattern = std::string(kProfileDirectory) + "*" + kProfileExtension;
    glob_t found = {};
    const std::unique_ptr<glob_t, void (*)(glob_t*)> release(&found, globfree);
    std::vector<std::string> paths;
    // Sorted here, since glob() would sort by the rules of the caller's locale.
    if (glob(pattern.c_str(), GLOB_ERR | GLOB_NOSORT, nullptr, &found) == 0) {
        paths.assign(found.gl_pathv, found.gl_pathv + found.gl_pathc);
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

// The line of the load itself is not written for a name that has no lock file.
bool isLockable(const std::string& path) {
    return fitsFileName(path.substr(path.rfind('/') + 1));
}

void logFailedLoad(const std::string& path) {
    FW_LOG(LOG_ERR, "Failed to load json from %s", path.c_str());
}

}  // namespace

void ProfileIndex::visit(const std::string& path) {
    LoadResult result = LoadResult::kNotParsed;
    const Json::Value* const document = isLockable(path) ? documents_.load(path, result) : nullptr;
    visits_.push_back({path, result});
    if (document == nullptr) {
        logFailedLoad(path);
        unreadable_.push_back({path, result});
        missesProfiles_ = missesProfiles_ || (isPassing(result) && path != kSettingsFile);
        return;
    }
    // The settings lie in the same directory and may have any member.
    const Json::Value* const name = path == kSettingsFile ? nullptr : nameMember(*document);
    if (name != nullptr) {
        paths_[name->asString()] = path;
    }
}

bool ProfileIndex::look() {
    const std::vector<std::string> files = jsonFiles();
    // Backwards, so that of two files with the same profile name the first one is kept.
    std::for_each(files.rbegin(), files.rend(), [this](const std::string& path) { visit(path); });
    return !files.empty();
}

// Where the lock directory cannot be used, every access of a file says so.
void ProfileIndex::repeatLines() {
    const bool all = std::exchange(startsOver_, false) && !isLockDirectoryUsable();
    for (const auto& [path, result] : all ? visits_ : unreadable_) {
        if (all && access(path.c_str(), F_OK) != 0) {
            continue;
        }
        if (isLockable(path) && result != LoadResult::kVanished) {
            if (result != LoadResult::kMissing) {
                (void)lockDirectory();
            }
            (void)logLoad(result, path);
        }
        if (result != LoadResult::kLoaded && result != LoadResult::kVanished) {
            logFailedLoad(path);
        }
    }
}

bool ProfileIndex::build() {
    if (state_ == kUnseen) {
        state_ = look() ? kSeen : kEmpty;
    } else {
        repeatLines();
    }
    if (state_ == kEmpty) {
        return FW_FAILURE("Fail to read file from %s", kProfileDirectory);
    }
    return true;
}

bool ProfileIndex::buildForUse() {
    if (!build()) {
        return FW_FAILURE("Failed to create meta json from /usr/zamo/etc/firewall.d/");
    }
    return true;
}

std::string ProfileIndex::pathOf(const std::string& name) {
    if (!buildForUse()) {
        return {};
    }
    const auto found = paths_.find(name);
    return found == paths_.end() ? std::string() : found->second;
}

std::string ProfileIndex::firstUnreadable() const {
    return unreadable_.empty() ? std::string() : unreadable_.back().path;
}

std::string profileFileName(const std::string& path) {
    const std::string name = path.substr(path.rfind('/') + 1);
    return name.substr(0, name.rfind('.'));
}

std::string profilePath(const std::string& fileName) {
    return kProfileDirectory + fileName + kProfileExtension;
}

}  // namespace FW
