// `zamofw verify`
#ifndef COMMAND_ANSWERS_VERIFYANSWER_H
#define COMMAND_ANSWERS_VERIFYANSWER_H

#include "command/console.h"

namespace zamofw {

// Answers {"ok":B,"differences":[{"family":4|6,"kind":S,"chain":S,"line":S,"adapter":S,
// "position":N|null,"name":S}]}, or the same as text. kNo when there is a difference.
[[nodiscard]] Status verifyAnswer(const Console& console);

}  // namespace zamofw

#endif
