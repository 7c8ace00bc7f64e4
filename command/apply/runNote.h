// Small documents of root's own in /run/zamofw/, gone with the next start of the system.
#ifndef COMMAND_APPLY_RUNNOTE_H
#define COMMAND_APPLY_RUNNOTE_H

#include <json/value.h>

#include <string>

namespace zamofw {

// Null when there is none that can be read.
[[nodiscard]] Json::Value readRunNote(const std::string& name);

// False, with errno set, when it cannot be written; then the old one stays.
[[nodiscard]] bool writeRunNote(const std::string& name, const Json::Value& note);

}  // namespace zamofw

#endif
