// Words as a shell would take them, and texts of others as a terminal may show them.
#ifndef COMMAND_WORDS_QUOTING_H
#define COMMAND_WORDS_QUOTING_H

#include <string>
#include <vector>

namespace zamofw {

// The words separated by blanks, each quoted where a shell needs it.
[[nodiscard]] std::string shellQuoted(const std::vector<std::string>& words);

// `text` for a message, in backquotes. Control characters and bytes that are not UTF-8 are written
// as \xNN, so that a name cannot drive the reader's terminal, and a long text is cut.
[[nodiscard]] std::string shown(const std::string& text);

}  // namespace zamofw

#endif
