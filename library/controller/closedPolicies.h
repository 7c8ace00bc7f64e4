// The policies of INPUT and FORWARD, which are closed while the rules are rebuilt.
#ifndef LIBRARY_CONTROLLER_CLOSEDPOLICIES_H
#define LIBRARY_CONTROLLER_CLOSEDPOLICIES_H

#include <functional>

namespace FW {

// Closes the policies, calls `rebuild`, and opens the policies again, even if `rebuild` throws. If
// they cannot be opened, the firewall is disabled. If they cannot all be closed, nothing more is
// done, and those that are closed stay so. False when any of it failed. Signals that would end the
// program wait until the end.
[[nodiscard]] bool behindClosedPolicies(const std::function<bool()>& rebuild);

}  // namespace FW

#endif
