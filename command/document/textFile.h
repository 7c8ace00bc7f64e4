// Reading a document's text from wherever it is.
#ifndef COMMAND_DOCUMENT_TEXTFILE_H
#define COMMAND_DOCUMENT_TEXTFILE_H

#include <string>

namespace zamofw {

// What stands for standard input and output.
constexpr const char* kStandardStream = "-";

// The whole text of the file, or of standard input for "-". Throws Failure when it cannot be read,
// or is larger than a profile can be: kNotPermitted where only root may read it, else kFailed.
[[nodiscard]] std::string readText(const std::string& path);

// The same without a word: false, with errno set.
[[nodiscard]] bool readTextQuietly(const std::string& path, std::string& text);

}  // namespace zamofw

#endif
