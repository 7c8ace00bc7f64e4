// The index of the profile directory: which file holds the profile of which name.
#ifndef LIBRARY_STORE_PROFILEINDEX_H
#define LIBRARY_STORE_PROFILEINDEX_H

#include <json/value.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "library/store/documents.h"

namespace FW {

// An operation on profiles builds the index several times: to see whether a profile exists, to find
// its path, to write it. An object of this class looks through the directory once; build() again
// only repeats the lines in the log about files that cannot be read.
class ProfileIndex {
  public:
    explicit ProfileIndex(Documents& documents) : documents_(documents) {}

    // False when the directory holds no JSON file. Logs its failures.
    [[nodiscard]] bool build();

    // build() on behalf of an operation that has to report the failure as well.
    [[nodiscard]] bool buildForUse();

    // The path of the profile's file, after buildForUse(); empty when there is no such profile.
    [[nodiscard]] std::string pathOf(const std::string& name);

    // The next build() repeats the lines about every file, as those of an object of its own.
    void startOver() { startsOver_ = true; }

    // From profile name to path. Empty before build().
    [[nodiscard]] const std::map<std::string, std::string>& paths() const { return paths_; }

    // A profile that is not in paths() may be in a file that could not be read this time.
    [[nodiscard]] bool mayMissProfiles() const { return missesProfiles_; }

    // The first file, in the order of their names, that could not be read. Empty when all could.
    [[nodiscard]] std::string firstUnreadable() const;

    [[nodiscard]] Documents& documents() const { return documents_; }

  private:
    bool look();
    void visit(const std::string& path);
    void repeatLines();

    struct Visit {
        std::string path;
        LoadResult result;
    };

    Documents& documents_;
    enum { kUnseen, kEmpty, kSeen } state_ = kUnseen;
    std::map<std::string, std::string> paths_;
    std::vector<Visit> visits_;
    std::vector<Visit> unreadable_;
    bool startsOver_ = false;
    bool missesProfiles_ = false;
};

// "1700000000" for "/usr/zamo/etc/firewall.d/1700000000.json".
[[nodiscard]] std::string profileFileName(const std::string& path);
[[nodiscard]] std::string profilePath(const std::string& fileName);

}  // namespace FW

#endif
