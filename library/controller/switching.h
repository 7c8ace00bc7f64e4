// Switching the firewall on and off, between the hooks by which other packages hear of it.
#ifndef LIBRARY_CONTROLLER_SWITCHING_H
#define LIBRARY_CONTROLLER_SWITCHING_H

#include <json/value.h>

#include <functional>

namespace FW {

// These log their failures.

// Loads the modules, stores "enabled" and calls `reload`.
[[nodiscard]] bool enableFirewall(const std::function<bool()>& reload);

// Flushes the chains, unloads the modules and stores "disabled". Takes no lock and leaves the
// policies alone, so that a rebuild that failed can use it. If another process rebuilds the rules
// at the same time, the chains are empty in the end all the same.
bool disableFirewall();

// Runs a command list; the firewall is disabled when a line fails.
[[nodiscard]] bool runListOrDisable(const Json::Value& list);

}  // namespace FW

#endif
