// `zamofw export` and `zamofw import`: the whole configuration as one document.
#ifndef COMMAND_ANSWERS_TRANSFERANSWERS_H
#define COMMAND_ANSWERS_TRANSFERANSWERS_H

#include <optional>
#include <string>
#include <vector>

#include "command/console.h"

namespace zamofw {

// Writes the configuration to the file, which only root may read, or to standard output. With
// --json the answer for a file is {"file":S,"profiles":N}; the document itself is JSON anyway.
[[nodiscard]] Status exportAnswer(const Console& console, const std::optional<std::string>& file);

struct ImportRequest {
    std::string file;       // "-": standard input
    bool planOnly = false;  // show what would change, and change nothing
    bool force = false;     // errors do not refuse the document
};

// Replaces the configuration by an exported one, and puts it into force. Asks before rules are
// lost. With `planOnly` the answer is {"added":[S],"replaced":[S],"deleted":[S],"settings":[S]},
// names of profiles and of settings, and kNo when something would change.
[[nodiscard]] Status importAnswer(const Console& console,
                                  const std::vector<std::string>& call,
                                  const ImportRequest& request);

}  // namespace zamofw

#endif
