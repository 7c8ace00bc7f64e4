// The store of profiles: one JSON file per profile in /usr/zamo/etc/firewall.d/.
#ifndef ZAMOFIREWALL_PROFILEDATABASE_H
#define ZAMOFIREWALL_PROFILEDATABASE_H

#include <json/value.h>

#include <map>
#include <string>
#include <vector>

#include "zamofirewall/export.h"
#include "zamofirewall/ruleModel.h"

namespace FW {

// Profiles are addressed by the "name" inside their file; the files' own names are numbers that no
// caller needs. The directory is the only state: every operation reads all its files anew, each of
// them once. Within an operation, a lock is waited for once, for at most 30 seconds (lockedJson.h).
// Objects have no state, and threads may use them at the same time.
//
// Operations return true on success. A failure is a line in the system log and false; nothing is
// thrown but what lockedJson.h names. A file that cannot be read, or that is no profile, is passed
// over; firewall_settings.json is never a profile. When two files carry the same name, the one
// whose file name sorts first is the profile. Names of profiles are UTF-8.
//
// Reading and writing a profile are separate steps: of two callers that change the same profile at
// once the last writer wins. But a profile that was renamed or deleted in between is never written
// under its old name by an operation that has read it before.
class ZAMOFW_EXPORT ZAMOFW_JSON_DB {
  public:
    // Sets one member of `meta` per profile name: an object whose "fileName" is the file's name
    // without directory and extension. False when the directory holds no JSON file at all.
    bool profileMetaCreate(Json::Value& meta);

    // Returns a file name that `meta` does not hold yet. Never returns when `meta` is empty: a
    // store in use holds at least one profile.
    std::string profilePathNameGen(const Json::Value& meta);

    // Returns the full path of the profile's file, empty when there is no such profile.
    std::string profilePathGet(const std::string& name);

    // Reads the profile's document. `document` is untouched on failure.
    bool profileDbLoad(const std::string& name, Json::Value& document);

    // Writes the document to the profile's file, or to a new file when there is none. False, too,
    // when the name is not UTF-8, or when there is no such profile but a file that could not be
    // read this time, which may hold it. In a directory with only the settings file, which can be
    // read, it never returns (see profilePathNameGen()).
    bool profileDbDump(const std::string& name, const Json::Value& document);

    // Deletes the profile's file and its lock file, under the lock. When the lock is not acquired
    // in time the file is deleted all the same, and the lock file stays. Always true, also for an
    // unknown name.
    bool profileDbRemove(const std::string& name);

    bool profileExist(const std::string& name);

    // The same as profileDbRemove(); the profile in force is not spared.
    bool profileDelete(const std::string& name);

    // Appends the names of all profiles in ascending order.
    bool profileEnum(std::vector<std::string>& names);

    // Stores every profile under its name, replacing entries. False at the first profile that
    // cannot be read; those before it are then in `profiles`.
    bool profileEnum(std::map<std::string, FWPROFILE>& profiles);

    // Reads a profile; its rules are appended to those in `profile`. On failure `profile` is
    // untouched.
    bool profileGet(const std::string& name, FWPROFILE& profile);

    // Writes the profile under `name`, which should be the record's name too, on the conditions of
    // profileDbDump(). The stored profile has a policy for every adapter with rules (ALLOW where
    // the record has none) and NONE for "global", whatever the record says.
    bool profileSet(const std::string& name, const FWPROFILE& profile);

    // Writes a new empty profile. False when the name is taken, and as for profileDbDump().
    bool profileCreate(const std::string& name);

    // Renames a profile and, when it is the profile in force, the name in the settings, of which
    // nothing else is changed. False when the new name is taken, may be in a file that cannot be
    // read this time, or is not UTF-8. When only the settings could not be written, the profile has
    // its new name and the settings still have the old one.
    bool profileRename(const std::string& oldName, const std::string& newName);

    // The conversions between records and JSON. They log nothing and check no codes. They return
    // false when a member has a wrong type; the output is then untouched.

    // Adds one member per adapter with rules to `out`.
    void ruleListToJson(const std::map<std::string, std::vector<FWRULE>>& rules, Json::Value& out);
    void profileToJson(const FWPROFILE& profile, Json::Value& out);

    // Appends the rules that `json`, the "rules" member of a profile document, holds.
    bool jsonToRuleList(Json::Value json, std::map<std::string, std::vector<FWRULE>>& rules);

    // Sets the name, appends the rules and sets the policies that the document holds.
    bool jsonToProfile(const Json::Value& json, FWPROFILE& profile);

    // Replaces `out` by the whole configuration: every profile file as it is, and the settings. A
    // profile that cannot be read is left out, unless it may be the one in force: then the result
    // is false, and `out` is incomplete.
    bool exportConfig(Json::Value& out);

    // Replaces the stored configuration by an exported one. Nothing is changed, and the result is
    // false, when the document has neither "config_profiles" nor "config_firewall_settings", when
    // one of them is no object, or when a member of "config_profiles" is no usable file name: not
    // UTF-8, longer than 250 bytes, empty, "." or "..", or with a slash or NUL in it. Apart from
    // that it is not atomic: the old profiles are deleted first, and a profile that cannot be
    // written, or would replace firewall_settings.json, is passed over with a line in the log.
    // False when the settings could not be stored.
    bool importConfig(const Json::Value& document);
};

}  // namespace FW

#endif
