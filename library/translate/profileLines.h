// A whole profile as lines.
#ifndef LIBRARY_TRANSLATE_PROFILELINES_H
#define LIBRARY_TRANSLATE_PROFILELINES_H

#include <map>
#include <string>
#include <vector>

#include "library/translate/adapters.h"
#include "library/translate/lines.h"

struct ZAMOFwServiceList;

namespace FW {

// What one translator has asked the system for.
struct SystemAnswers {
    Interfaces interfaces;
    ZAMOFwServiceList*& catalogue;
};

struct ProfileRequest {
    const std::map<std::string, std::vector<FWRULE>>& rules;
    const std::map<std::string, FW_POLICY>& policies;
    bool established;
    const std::string& clientIp;
};

// False when the client is no address, before any line, or at the first rule that cannot be
// translated. Both are logged.
[[nodiscard]] bool profileLines(const ProfileRequest& request,
                                const SystemAnswers& system,
                                const LineSink& sink);

// The lines of a rule for the tunnel that carries IPv6 for `adapter`, if there is one.
void tunnelLines(const std::string& adapter,
                 const FWRULE& rule,
                 const LineOrigin& origin,
                 const SystemAnswers& system,
                 const LineSink& sink);

}  // namespace FW

#endif
