// What happens to one packet.
#ifndef COMMAND_ANALYSIS_EXPLANATION_H
#define COMMAND_ANALYSIS_EXPLANATION_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "command/analysis/model.h"

namespace zamofw::analysis {

struct Packet {
    int family = 4;
    Hook hook = Hook::kInput;
    std::optional<std::string> in;  // none: an interface that no line names
    std::optional<std::string> out;
    bool isEstablished = false;
    std::uint8_t protocol = kTcp;
    Number source = 0;
    Number destination = 0;
    Number sourcePort = 0;  // of TCP and UDP alone
    Number port = 0;
};

// A packet of which some things are not said: then they are such that no rule singles them out.
struct PacketQuestion {
    Packet packet;
    bool isProtocolKnown = true;
    std::optional<Number> source;
    std::optional<Number> destination;
    std::optional<Number> sourcePort;
    std::optional<Number> port;
};

struct Explanation {
    bool isAllowed = true;
    Origin decider;
    std::vector<std::string> lines;  // of what decides, in the packet's family
    std::vector<Origin> log;         // what logs the packet
    std::vector<Origin> next;        // later rules that would have decided otherwise
    Packet packet;                   // the one that was looked at
};

// Whose verdicts hold the packet, in the order of evaluation; the first of them decides.
[[nodiscard]] std::vector<Origin> matchesOf(const Model& model, const Packet& packet);

[[nodiscard]] Explanation explain(const Model& model, const PacketQuestion& question);

}  // namespace zamofw::analysis

#endif
