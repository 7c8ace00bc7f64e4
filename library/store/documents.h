// The JSON files that one operation reads and writes.
#ifndef LIBRARY_STORE_DOCUMENTS_H
#define LIBRARY_STORE_DOCUMENTS_H

#include <json/value.h>
#include <sys/types.h>

#include <cstddef>
#include <ctime>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "library/store/jsonFile.h"

namespace FW {

// An operation looks at the same files several times. An object of this class serves one operation:
// it remembers a document as long as its file's version (inode, size, times) is unchanged, and
// which locks were not acquired in time, so that nothing is parsed twice or waited for twice. The
// log lines are those of an operation that does read each time, and each load takes the lock.
class Documents {
  public:
    // jsonFileLoad(). Null when it fails; otherwise valid until the file is accessed again.
    const Json::Value* load(const std::string& path);
    const Json::Value* load(const std::string& path, LoadResult& result);

    // jsonFileDump(), whatever the file holds.
    [[nodiscard]] bool dump(const Json::Value& document, const std::string& path);

    // jsonFileDump() of a document that depends on what the file holds once its lock is acquired:
    // `stored` is null unless it was loaded, and kVanished when there is no file. Where the editor
    // returns null the file stays as it is, and nothing is written to the log.
    using Editor = std::function<const Json::Value*(LoadResult result, const Json::Value* stored)>;
    [[nodiscard]] DumpResult edit(const Editor& editor, const std::string& path);

    // Deletes the file and its lock file, unless the file holds a document that is `kept` once its
    // lock is acquired. Without the lock only the file is deleted: others would make a second lock
    // file while the first is held. Logs nothing.
    void remove(const std::string& path, const std::function<bool(const Json::Value&)>& kept);

    // How often files have been read. What was made of a document holds until the number grows.
    [[nodiscard]] std::size_t readings() const { return readings_; }

  private:
    struct Version {
        dev_t device;
        ino_t inode;
        off_t size;
        timespec modified;
        timespec changed;
    };
    struct Known {
        Version version;
        LoadResult result;
        Json::Value document;
    };

    static std::optional<Version> versionOf(const std::string& path);
    static bool isSame(const Version& one, const Version& other);
    const Known* unchanged(const std::string& path) const;
    LoadResult readUnlessKnown(const std::string& path);
    DumpResult write(const Replacement& replacement, const std::string& path);
    const Json::Value* documentIn(const std::string& path) const;

    std::map<std::string, Known> known_;
    std::set<std::string> timedOut_;
    std::size_t readings_ = 0;
};

}  // namespace FW

#endif
