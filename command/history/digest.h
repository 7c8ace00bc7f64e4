#ifndef COMMAND_HISTORY_DIGEST_H
#define COMMAND_HISTORY_DIGEST_H

#include <string>
#include <string_view>

namespace zamofw {

// The SHA-256 of the text in hexadecimal digits, as sha256sum prints it.
[[nodiscard]] std::string digestOf(std::string_view text);

}  // namespace zamofw

#endif
