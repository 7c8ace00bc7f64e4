// A rule as a reader says it.
#ifndef COMMAND_REPORT_RULEPHRASE_H
#define COMMAND_REPORT_RULEPHRASE_H

#include <string>

#include "zamofirewall/ruleModel.h"

namespace zamofw::report {

// "from 192.168.1.0/24", "from anywhere, IPv6 only", "to 10.0.0.1-10.0.0.9"
[[nodiscard]] std::string addressPhrase(const FW::FWRULE& rule);

// "ssh, http", "tcp 80, 443", "udp from port 53", "everything"
[[nodiscard]] std::string servicePhrase(const FW::FWRULE& rule);

// What else is to be known: "going out, logged"; its labels. May be empty.
[[nodiscard]] std::string notePhrase(const FW::FWRULE& rule);

}  // namespace zamofw::report

#endif
