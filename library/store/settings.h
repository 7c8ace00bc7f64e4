// The settings document: whether the firewall is enabled, and which profile is in force.
//
// The profile store needs it below the controller, whose public members of the same purpose hand
// on to these functions. The conventions are those of ZAMOFW::configGet() and its kin.
#ifndef LIBRARY_STORE_SETTINGS_H
#define LIBRARY_STORE_SETTINGS_H

#include <json/value.h>

#include <string>

namespace FW {

void settingsInit(Json::Value& settings);
[[nodiscard]] bool settingsGet(Json::Value& settings);
[[nodiscard]] bool settingsSet(const Json::Value& values);
[[nodiscard]] bool settingsStatus(bool& enabled);
[[nodiscard]] bool settingsProfile(std::string& name);

// The settings and the name of the profile in force, empty when they name none. Logs only what
// settingsGet() logs; a name that is no text is a failure without a line of its own.
[[nodiscard]] bool settingsGetWithProfile(Json::Value& settings, std::string& profile);

}  // namespace FW

#endif
