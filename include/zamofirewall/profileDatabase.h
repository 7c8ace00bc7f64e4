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
// caller needs to know. The directory is the only state: every operation looks at the files anew,
// each file access waits at most 30 seconds for its lock (lockedJson.h), and an operation on a
// profile looks into every file of the directory.
//
// Operations return true on success. A failure is one line in the system log and false. A file of
// the directory that cannot be read, or that is no profile, is passed over. When two files carry
// the same name, the one whose file name sorts first is the profile.
class ZAMOFW_EXPORT ZAMOFW_JSON_DB {
  public:
    // Fills `meta` with one member per profile name, an object whose "fileName" is the file's name
    // without directory and extension. False when the directory holds no JSON file at all.
    bool profileMetaCreate(Json::Value& meta);

    // A file name that `meta` does not hold yet. Never returns when `meta` is empty: a store in use
    // holds at least one profile.
    std::string profilePathNameGen(const Json::Value& meta);

    // The full path of the profile's file; an empty text when there is no such profile.
    std::string profilePathGet(const std::string& name);

    bool profileDbLoad(const std::string& name, Json::Value& document);

    // Writes the document to the profile's file, or to a new file when there is none.
    bool profileDbDump(const std::string& name, const Json::Value& document);

    // Deletes the profile's file and its lock file. Always true, also for an unknown name.
    bool profileDbRemove(const std::string& name);

    bool profileExist(const std::string& name);

    // The same as profileDbRemove(); the profile in force is not spared.
    bool profileDelete(const std::string& name);

    // Appends the names of all profiles in ascending order.
    bool profileEnum(std::vector<std::string>& names);

    // Stores every profile under its name, replacing entries. False at the first profile that
    // cannot be read; those before it are then in `profiles`.
    bool profileEnum(std::map<std::string, FWPROFILE>& profiles);

    // Reads a profile; its rules are appended to what `profile` holds already.
    bool profileGet(const std::string& name, FWPROFILE& profile);

    // Writes the profile under `name`, which should be the record's name too. The stored profile
    // has a policy for every adapter with rules (ALLOW where the record has none) and NONE for
    // "global", whatever the record says.
    bool profileSet(const std::string& name, const FWPROFILE& profile);

    // Writes a new empty profile. False when the name is taken.
    bool profileCreate(const std::string& name);

    // Renames a profile and, when it is the profile in force, the name in the settings. False when
    // the new name is taken. When only the settings could not be written, the profile carries its
    // new name and the settings still the old one.
    bool profileRename(const std::string& oldName, const std::string& newName);

    // The conversions between records and JSON. They log nothing and check no codes. Where they
    // return false, a member has a wrong type, and the output is as it was.

    // Adds one member per adapter with rules to `out`.
    void ruleListToJson(const std::map<std::string, std::vector<FWRULE>>& rules, Json::Value& out);
    void profileToJson(const FWPROFILE& profile, Json::Value& out);

    // Appends the rules that `json`, the "rules" member of a profile document, holds.
    bool jsonToRuleList(Json::Value json, std::map<std::string, std::vector<FWRULE>>& rules);

    // Sets the name, appends the rules and sets the policies that the document holds.
    bool jsonToProfile(const Json::Value& json, FWPROFILE& profile);

    // Replaces `out` by the whole configuration: every profile file as it is, and the settings. A
    // profile that cannot be read is left out, unless it may be the one in force: then the result
    // is false.
    bool exportConfig(Json::Value& out);

    // Replaces the stored configuration by an exported one. Not atomic: the old profiles are
    // deleted first, and a profile that cannot be written is passed over with a log line. False
    // when the settings could not be stored, or when the document does not have the shape of an
    // exported one; in the latter case nothing is changed.
    bool importConfig(const Json::Value& document);
};

}  // namespace FW

#endif
