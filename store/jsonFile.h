#ifndef STORE_JSONFILE_H
#define STORE_JSONFILE_H

#include <json/value.h>

#include <string>

namespace FW {

// jsonFileLoad() of a document that must be an object. Null is an object without members.
[[nodiscard]] bool jsonObjectLoad(Json::Value& value, const std::string& path);

}  // namespace FW

#endif
