// Profiles as sets of packets, for the answers that ask about them.
#ifndef COMMAND_ANSWERS_MEANING_H
#define COMMAND_ANSWERS_MEANING_H

#include <json/value.h>

#include <memory>
#include <optional>
#include <string>

#include "command/analysis/explanation.h"
#include "command/analysis/model.h"
#include "command/document/target.h"
#include "command/plan/plan.h"

namespace zamofw {

// The ranges that the library knows of a country. Keeps what it has read.
[[nodiscard]] analysis::CountryRanges countryRanges();

// A profile's rules as they would be in force if all of its adapters were there.
struct Meaning {
    std::string profile;
    Plan plan;
    analysis::Model model;
};

// A meaning points into itself.
[[nodiscard]] std::unique_ptr<const Meaning> meaningOf(const FW::FWPROFILE& profile,
                                                       const std::string& name,
                                                       analysis::ModelReader& reader);

// Throws Failure for a line that is not understood: an answer about all packets would be a guess.
void requireKnown(const Meaning& meaning);

// "line `-A X ...` of rule 2 of eth0"
[[nodiscard]] std::string unknownText(const analysis::UnknownLine& unknown);

// "rule 2 of eth0 (name)", "the default policy of eth0", "a built-in line", "no rule"
[[nodiscard]] std::string originText(const analysis::Origin& origin);

[[nodiscard]] const char* kindName(analysis::Origin::Kind kind);
[[nodiscard]] const char* verdictName(bool isAllowed);
[[nodiscard]] const char* hookName(analysis::Hook hook);

// {"adapter":S,"position":N|null}
[[nodiscard]] Json::Value placeJson(const analysis::Origin& origin);

[[nodiscard]] Json::Value addressesJson(const analysis::Intervals& addresses, int family);
[[nodiscard]] Json::Value portsJson(const analysis::Intervals& ports);

// A packet as witness: {"destination":A,"hook":S,"in":S,"out":S|null,"port":N,"protocol":S,
// "source":A,"source_port":N}. Ports are those of TCP and UDP, "out" that of a forwarded packet.
[[nodiscard]] Json::Value placedPacketJson(const analysis::Packet& packet,
                                           const std::string& protocol);

// "10.0.0.0-10.255.255.255, 192.168.1.5", cut after some of them
[[nodiscard]] std::string addressesText(const analysis::Intervals& addresses, int family);
[[nodiscard]] std::string portsText(const analysis::Intervals& ports);

// An address that was given as an option. Wrong use when it is none.
[[nodiscard]] Address addressOption(const std::string& option, const std::string& text);
[[nodiscard]] analysis::Number portOption(const std::string& option, const std::string& text);

}  // namespace zamofw

#endif
