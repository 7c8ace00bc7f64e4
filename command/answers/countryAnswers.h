// `zamofw country ...`: the countries that rules may name here.
#ifndef COMMAND_ANSWERS_COUNTRYANSWERS_H
#define COMMAND_ANSWERS_COUNTRYANSWERS_H

#include <string>

#include "command/console.h"

namespace zamofw {

// {"countries":[{"code":S,"v4":N,"v6":N}]}, with the number of address ranges.
[[nodiscard]] Status countryList(const Console& console);

// {"code":S,"v4":[[FIRST,LAST]...],"v6":[...]}
[[nodiscard]] Status countryShow(const Console& console, const std::string& code);

}  // namespace zamofw

#endif
