#include "command/jsonLine.h"

#include <json/writer.h>

namespace zamofw {

std::string jsonLine(const Json::Value& value) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    return Json::writeString(builder, value);
}

}  // namespace zamofw
