// Another configuration in the place of the stored one, in the store and in the kernel.
#ifndef COMMAND_ANSWERS_CONFIGURATIONEXCHANGE_H
#define COMMAND_ANSWERS_CONFIGURATIONEXCHANGE_H

#include <json/value.h>

#include <optional>

#include "command/answers/reloadAnswer.h"
#include "command/console.h"
#include "zamofirewall/ruleModel.h"

namespace zamofw {

// Stores the exported configuration, and makes the kernel follow: the rules of an enabled firewall
// are put into force as one transaction, those of one that is disabled now are removed. Throws
// Failure when that fails, with all as it was before: a refused line takes the whole exchange back.
void exchangeConfiguration(const Console& console, const Json::Value& configuration, Errors errors);

// The profile that a configuration has in force, if it can be read.
[[nodiscard]] std::optional<FW::FWPROFILE> profileInForceOf(const Json::Value& configuration);

// Says on standard error which packets get another verdict by the profiles in force, if any do.
void showExchange(const Console& console, const Json::Value& before, const Json::Value& after);

}  // namespace zamofw

#endif
