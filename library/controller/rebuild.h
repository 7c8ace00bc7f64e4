// What a reload and a trial have in common: the rules are rebuilt behind closed policies.
#ifndef LIBRARY_CONTROLLER_REBUILD_H
#define LIBRARY_CONTROLLER_REBUILD_H

#include <json/value.h>

#include <functional>

namespace FW {

class ZAMOFW;

// Closes the policies, runs `rebuild`, and opens them again, also when `rebuild` throws. Policies
// that cannot be opened switch the firewall off. False when any of it failed; policies that could
// not be closed are left as they are.
[[nodiscard]] bool rebuildRules(ZAMOFW& controller, const std::function<bool()>& rebuild);

// Runs the command list; a line that fails switches the firewall off.
[[nodiscard]] bool execOrDisable(ZAMOFW& controller, Json::Value list);

}  // namespace FW

#endif
