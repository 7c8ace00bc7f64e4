// `zamofw query ...`: whether the profile in force lets a port or a service through.
#ifndef COMMAND_ANSWERS_QUERYANSWER_H
#define COMMAND_ANSWERS_QUERYANSWER_H

#include <optional>
#include <string>

#include "command/console.h"

namespace zamofw {

struct PortQuery {
    std::string adapter;
    std::string port;                     // or a range
    std::optional<std::string> protocol;  // tcp, udp or both; not given: both
    bool source = false;
};

// {"answers":{S:"allow"|"deny"|"partial"|"none"}}: the library's answer for the adapter, and under
// "global" what the rules for every adapter say. kNo when one of them denies or allows only some
// addresses. `none` blocks nothing: no rule decides, and then the packet passes.
[[nodiscard]] Status queryPort(const Console& console, const PortQuery& query);
[[nodiscard]] Status queryService(const Console& console,
                                  const std::string& adapter,
                                  const std::string& service);

}  // namespace zamofw

#endif
