// `zamofw report FILE.html`
#ifndef COMMAND_ANSWERS_REPORTANSWER_H
#define COMMAND_ANSWERS_REPORTANSWER_H

#include <string>

#include "command/console.h"

namespace zamofw {

// Writes one page about the firewall: what is in force and what is wrong with it. `file` may be "-"
// for standard output. What a caller who is not root cannot know is left out, and said to be.
[[nodiscard]] Status reportAnswer(const Console& console, const std::string& file);

}  // namespace zamofw

#endif
