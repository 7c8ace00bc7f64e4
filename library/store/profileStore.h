// Operations on stored profiles, as steps of one operation that shares its documents.
//
// Results and log lines are those of the members of ZAMOFW_JSON_DB that are named with them.
#ifndef LIBRARY_STORE_PROFILESTORE_H
#define LIBRARY_STORE_PROFILESTORE_H

#include <json/value.h>

#include <map>
#include <string>
#include <vector>

#include "library/store/documents.h"
#include "library/store/profileIndex.h"
#include "zamofirewall/ruleModel.h"

namespace FW {

using ProfileMap = std::map<std::string, FWPROFILE>;

[[nodiscard]] bool profileExists(Documents& documents, const std::string& name);  // profileExist()
[[nodiscard]] bool listProfiles(Documents& documents,
                                std::vector<std::string>& names);  // profileEnum()
[[nodiscard]] bool readProfile(Documents& documents,
                               const std::string& name,
                               FWPROFILE& profile);  // profileGet()
// The two halves of readProfile(): the document, null when it cannot be read, and the profile in
// it.
[[nodiscard]] const Json::Value* findDocument(Documents& documents, const std::string& name);
[[nodiscard]] bool profileOfDocument(const Json::Value& document, FWPROFILE& profile);
[[nodiscard]] bool storeDocument(Documents& documents,
                                 const std::string& name,
                                 const Json::Value& document);  // profileDbDump()
[[nodiscard]] bool storeProfile(Documents& documents,
                                const std::string& name,
                                const FWPROFILE& profile);                        // profileSet()
[[nodiscard]] bool createProfile(Documents& documents, const std::string& name);  // profileCreate()
[[nodiscard]] bool renameProfile(Documents& documents,
                                 const std::string& oldName,
                                 const std::string& newName);  // profileRename()

// For operations on every profile, which look through the directory once.

[[nodiscard]] bool readProfiles(ProfileIndex& index, ProfileMap& profiles);  // profileEnum()

// profileSet() of a profile that was read through the same index. False when there is no such
// profile any more: writing it would bring back what was deleted or renamed meanwhile.
[[nodiscard]] bool rewriteProfile(ProfileIndex& index,
                                  const std::string& name,
                                  const FWPROFILE& profile);

// profileDbRemove(): always true, as there.
bool deleteProfile(ProfileIndex& index, const std::string& name);

// The document of the profile at this path; null when it cannot be read, or when it carries another
// name by now.
[[nodiscard]] const Json::Value* loadDocument(Documents& documents,
                                              const std::string& path,
                                              const std::string& name);

}  // namespace FW

#endif
