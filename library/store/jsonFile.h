#ifndef LIBRARY_STORE_JSONFILE_H
#define LIBRARY_STORE_JSONFILE_H

#include <json/value.h>

#include <string>

namespace FW {

// Whether the members of the value may be asked for: the JSON library throws for any other kind,
// and takes null for an object without members.
[[nodiscard]] bool isObjectOrNull(const Json::Value& value);

// jsonFileLoad() of a document that must be an object.
[[nodiscard]] bool jsonObjectLoad(Json::Value& value, const std::string& path);

}  // namespace FW

#endif
