#ifndef COMMAND_STARTSWITH_H
#define COMMAND_STARTSWITH_H

#include <string_view>

namespace zamofw {

[[nodiscard]] inline bool startsWith(std::string_view text, std::string_view start) {
    return text.substr(0, start.size()) == start;
}

}  // namespace zamofw

#endif
