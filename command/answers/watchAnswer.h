// `zamofw watch`
#ifndef COMMAND_ANSWERS_WATCHANSWER_H
#define COMMAND_ANSWERS_WATCHANSWER_H

#include "command/console.h"

namespace zamofw {

// Puts the profile in force into the kernel again whenever the adapters that it names have come or
// gone, until a signal ends it. The first look is at its start: it reloads, unless nobody has put
// rules into force since an earlier watch and the adapters are the same. A reload that fails is
// tried again, less and less often. While a trial is under way it waits for its end.
[[nodiscard]] Status watchAnswer(const Console& console);

}  // namespace zamofw

#endif
