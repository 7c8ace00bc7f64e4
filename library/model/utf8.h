#ifndef LIBRARY_MODEL_UTF8_H
#define LIBRARY_MODEL_UTF8_H

#include <string>

namespace FW {

// The JSON writer replaces the bytes of any other text, which is then read back as a different one.
[[nodiscard]] bool isUtf8(const std::string& text);

}  // namespace FW

#endif
