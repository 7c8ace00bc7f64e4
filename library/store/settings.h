// The settings document: whether the firewall is enabled, and which profile is in force.
//
// The profile store needs it below the controller, whose public members of the same purpose forward
// to these functions. Results and log lines are those of ZAMOFW::configGet() and its kin.
#ifndef LIBRARY_STORE_SETTINGS_H
#define LIBRARY_STORE_SETTINGS_H

#include <json/value.h>

#include <string>

#include "library/store/documents.h"

namespace FW {

void settingsInit(Json::Value& settings);
[[nodiscard]] bool settingsGet(Documents& documents, Json::Value& settings);
// Members that another process changes meanwhile are kept, unless `values` names them.
[[nodiscard]] bool settingsSet(Documents& documents, const Json::Value& values);
[[nodiscard]] bool settingsStatus(Documents& documents, bool& enabled);
[[nodiscard]] bool settingsProfile(Documents& documents, std::string& name);

// Sets the profile in force alone, as settingsSet() does.
[[nodiscard]] bool settingsSetProfile(Documents& documents, const std::string& name);

// The name of the profile in force, empty when the settings name none, and the settings. Logs only
// what settingsGet() logs; a non-string name is a failure without a line of its own.
[[nodiscard]] bool settingsGetWithProfile(Documents& documents,
                                          Json::Value& settings,
                                          std::string& profile);

}  // namespace FW

#endif
