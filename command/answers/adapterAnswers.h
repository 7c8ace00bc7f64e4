// `zamofw adapter ...`: the interfaces that rules are for.
#ifndef COMMAND_ANSWERS_ADAPTERANSWERS_H
#define COMMAND_ANSWERS_ADAPTERANSWERS_H

#include <string>
#include <vector>

#include "command/console.h"

namespace zamofw {

// {"adapters":[{"name":S,"present":B,"rules":N,"policy":S|null}]}: those of the profile in force,
// and those that rules may use now.
[[nodiscard]] Status adapterList(const Console& console);

// Moves the rules and the default of an adapter to another name in every profile. Asks before rules
// are lost: those of the new name, or with equal names all of them.
[[nodiscard]] Status adapterRename(const Console& console,
                                   const std::vector<std::string>& call,
                                   const std::string& oldName,
                                   const std::string& newName);

}  // namespace zamofw

#endif
