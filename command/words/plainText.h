// Texts that are safe to store, to print and to give back as a word.
#ifndef COMMAND_WORDS_PLAINTEXT_H
#define COMMAND_WORDS_PLAINTEXT_H

#include <string>

namespace zamofw {

// Whether the text is valid UTF-8 without control characters. An empty one is.
[[nodiscard]] bool isPlainText(const std::string& text);

}  // namespace zamofw

#endif
