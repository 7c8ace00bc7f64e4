// `zamofw doctor [--repair]`
#ifndef COMMAND_ANSWERS_DOCTORANSWER_H
#define COMMAND_ANSWERS_DOCTORANSWER_H

#include "command/console.h"

namespace zamofw {

// Answers {"ok":B,"findings":[{"kind":S,"message":S,"remedy":S,"repaired":B}]}, or the same as
// text: what a crash, a power cut or another program has left behind. With `repair` it mends what
// no other program and no person has to mend. kNo when something is left to mend.
[[nodiscard]] Status doctorAnswer(const Console& console, bool repair);

}  // namespace zamofw

#endif
