// The ports of named services. The catalogue is read when it is first needed; null until then.
#ifndef LIBRARY_TRANSLATE_SERVICEPORTS_H
#define LIBRARY_TRANSLATE_SERVICEPORTS_H

#include <string>
#include <vector>

#include "library/translate/fragment.h"
#include "zamofirewall/translator.h"

namespace FW {

void releaseCatalogue(ZAMOFwServiceList*& catalogue);

// Appends the ports of the services that the catalogue knows. False when there is no catalogue,
// which is logged.
[[nodiscard]] bool findServicePorts(const std::vector<std::string>& services,
                                    ZAMOFwServiceList*& catalogue,
                                    ServPort& ports);

// Appends the fragments of these ports and those of the services' own IP protocols.
[[nodiscard]] bool serviceFragments(const std::vector<std::string>& services,
                                    ZAMOFwServiceList*& catalogue,
                                    std::vector<PortFragment>& fragments);

}  // namespace FW

#endif
