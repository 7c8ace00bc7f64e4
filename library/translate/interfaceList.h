// The interfaces that rules can name, as the platform reports them.
#ifndef LIBRARY_TRANSLATE_INTERFACELIST_H
#define LIBRARY_TRANSLATE_INTERFACELIST_H

#include <string>
#include <vector>

namespace FW {

// Appends the names of the interfaces that are up and configured, at most 32, and the wireless one
// on a machine that has it. False when the platform cannot list them; the failure is logged under
// the caller's module name.
[[nodiscard]] bool listInterfaces(const char* logModule, std::vector<std::string>& names);

}  // namespace FW

#endif
