// The index of the profile directory: which file holds the profile of which name.
#ifndef LIBRARY_STORE_PROFILEINDEX_H
#define LIBRARY_STORE_PROFILEINDEX_H

#include <json/value.h>
#include <sys/types.h>

#include <ctime>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "library/model/names.h"

namespace FW {

// An operation on profiles builds the index several times, and looks into every file each time. An
// object of this class serves one operation: it remembers the names in files that have not been
// touched since it read them, so that 20 profiles are not parsed 800 times to list them.
class ProfileIndex {
  public:
    // ZAMOFW_JSON_DB::profileMetaCreate(). Logs its failure.
    [[nodiscard]] bool create(Json::Value& meta);

    // create() on behalf of an operation that has to report the failure as well.
    [[nodiscard]] bool createForUse(Json::Value& meta);

    // ZAMOFW_JSON_DB::profilePathGet().
    [[nodiscard]] std::string pathOf(const std::string& name);

    // The first file, in the order of their names, that the last create() could not read.
    [[nodiscard]] const std::string& firstUnreadable() const { return firstUnreadable_; }

  private:
    struct FileVersion {
        dev_t device;
        ino_t inode;
        off_t size;
        timespec modified;
        timespec changed;
    };
    struct Known {
        FileVersion version;
        std::optional<std::string> name;  // none: the file is no profile
    };

    static std::optional<FileVersion> versionOf(const std::string& path);
    static bool isSame(const FileVersion& one, const FileVersion& other);
    bool nameIn(const std::string& path, std::optional<std::string>& name);

    std::map<std::string, Known> known_;
    std::string firstUnreadable_;
};

// The full path of a profile file, from its entry in the index.
std::string profilePath(const Json::Value& entry);

}  // namespace FW

#endif
