#ifndef COMMAND_JSONLINE_H
#define COMMAND_JSONLINE_H

#include <json/value.h>

#include <string>

namespace zamofw {

// The value on one line, without a line feed at the end. Characters beyond ASCII are escaped.
[[nodiscard]] std::string jsonLine(const Json::Value& value);

}  // namespace zamofw

#endif
