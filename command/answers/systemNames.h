// The names that this machine knows: services, countries and adapters.
#ifndef COMMAND_ANSWERS_SYSTEMNAMES_H
#define COMMAND_ANSWERS_SYSTEMNAMES_H

#include "command/document/check.h"
#include "command/words/ruleWords.h"

namespace zamofw {

[[nodiscard]] Vocabulary systemVocabulary();

[[nodiscard]] CheckContext systemCheckContext(const Vocabulary& vocabulary);

}  // namespace zamofw

#endif
