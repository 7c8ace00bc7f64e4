#include "command/jsonLine.h"

#include <json/writer.h>

#include <sstream>

namespace zamofw {

std::string jsonLine(const Json::Value& value) {
    std::ostringstream line;
    JsonLineWriter().write(value, line);
    return line.str();
}

JsonLineWriter::JsonLineWriter() {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    writer_.reset(builder.newStreamWriter());
}

JsonLineWriter::~JsonLineWriter() = default;

void JsonLineWriter::write(const Json::Value& value, std::ostream& out) {
    writer_->write(value, &out);
}

}  // namespace zamofw
