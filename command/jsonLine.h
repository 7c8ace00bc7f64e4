#ifndef COMMAND_JSONLINE_H
#define COMMAND_JSONLINE_H

#include <json/value.h>

#include <iosfwd>
#include <memory>
#include <string>

namespace Json {
class StreamWriter;
}

namespace zamofw {

// The value on one line, without a line feed at the end. Characters beyond ASCII are escaped.
[[nodiscard]] std::string jsonLine(const Json::Value& value);

// The same for many values.
class JsonLineWriter {
  public:
    JsonLineWriter();
    ~JsonLineWriter();

    void write(const Json::Value& value, std::ostream& out);

  private:
    std::unique_ptr<Json::StreamWriter> writer_;
};

}  // namespace zamofw

#endif
