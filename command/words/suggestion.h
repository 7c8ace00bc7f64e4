// Near misses: "sssh" is probably "ssh".
#ifndef COMMAND_WORDS_SUGGESTION_H
#define COMMAND_WORDS_SUGGESTION_H

#include <string>
#include <vector>

namespace zamofw {

// "did you mean `ssh`?", or an empty text when nothing is near.
[[nodiscard]] std::string suggestion(const std::string& word,
                                     const std::vector<std::string>& candidates);

}  // namespace zamofw

#endif
