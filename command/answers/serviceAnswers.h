// `zamofw service ...`: the catalogue, and the services that are kept open or closed.
#ifndef COMMAND_ANSWERS_SERVICEANSWERS_H
#define COMMAND_ANSWERS_SERVICEANSWERS_H

#include <string>
#include <vector>

#include "command/console.h"

namespace zamofw {

// {"services":[{"name":S,"title":S,"enabled":B,"destination":{"protocol":S,"ports":[S]}|null,
//   "source":...}]}
[[nodiscard]] Status serviceList(const Console& console);

// One of these entries.
[[nodiscard]] Status serviceShow(const Console& console, const std::string& name);

// Puts the services into the rule at the head of the rules for every adapter, in every profile.
[[nodiscard]] Status serviceReserve(const Console& console,
                                    const std::vector<std::string>& call,
                                    const std::vector<std::string>& names,
                                    bool deny);

// Takes the service out of every rule of every profile. Asks before a rule of a user goes with it.
[[nodiscard]] Status serviceRelease(const Console& console,
                                    const std::vector<std::string>& call,
                                    const std::string& name);

}  // namespace zamofw

#endif
