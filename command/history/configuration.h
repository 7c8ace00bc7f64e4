// The stored configuration as a whole: the settings and every profile.
#ifndef COMMAND_HISTORY_CONFIGURATION_H
#define COMMAND_HISTORY_CONFIGURATION_H

#include <json/value.h>

#include <string>

namespace zamofw {

// The members of an exported configuration.
constexpr const char* kExportedProfiles = "config_profiles";
constexpr const char* kExportedSettings = "config_firewall_settings";

// Throws Failure unless the directory of the profiles is there. Makes the settings when they are
// missing: the library cannot tell a directory without any file from one that it cannot read.
void requireStoreDirectory();

// The exported configuration. Throws Failure when it cannot be read whole.
[[nodiscard]] Json::Value exportedConfiguration();

// The same, of a damaged one what can be read.
[[nodiscard]] Json::Value readableConfiguration();

// What `zamofw export` prints, and what digests of a configuration are made of.
[[nodiscard]] std::string exportText(const Json::Value& configuration);

// Makes the stored configuration exactly this exported one, with the same file names. Throws
// Failure when that was not possible; then it may be stored in part.
void restoreConfiguration(const Json::Value& configuration);

}  // namespace zamofw

#endif
