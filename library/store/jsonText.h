// JSON documents as text, the same in every locale.
#ifndef LIBRARY_STORE_JSONTEXT_H
#define LIBRARY_STORE_JSONTEXT_H

#include <json/value.h>

#include <string>

namespace FW {

[[nodiscard]] bool parseJson(const std::string& text, Json::Value& value);
[[nodiscard]] std::string renderJson(const Json::Value& value);

// Whether the members of the value may be asked for: the JSON library throws for any other kind,
// and takes null for an object without members.
[[nodiscard]] bool isObjectOrNull(const Json::Value& value);

// The "name" of a profile document; null when it is no profile.
[[nodiscard]] const Json::Value* nameMember(const Json::Value& document);

}  // namespace FW

#endif
