#include "command/analysis/explanation.h"

#include <algorithm>

#include "command/analysis/dimension.h"

namespace zamofw::analysis {
namespace {

bool isIn(const SetPointer& set, Number number) {
    return set == nullptr || contains(*set, number);
}

bool isOn(const std::string& pattern, const std::optional<std::string>& interface) {
    return pattern.empty() || pattern == "+" || (interface && namesInterface(pattern, *interface));
}

bool holds(const LineMatch& line, const Packet& packet) {
    return line.hook == packet.hook && isOn(line.in, packet.in) &&
           (line.out.empty() || (packet.hook == Hook::kForward && isOn(line.out, packet.out))) &&
           (!line.protocol || *line.protocol == packet.protocol) &&
           (!line.isForEstablished || packet.isEstablished) && !line.isForMessageTypes &&
           isIn(line.source, packet.source) && isIn(line.destination, packet.destination) &&
           isIn(line.sourcePort, packet.sourcePort) && isIn(line.port, packet.port);
}

// A number that is in as few of the lines' sets as can be.
Number leastNamed(const FamilyModel& model,
                  SetPointer LineMatch::*field,
                  Number last,
                  const Intervals& preferred) {
    std::vector<SetPointer> sets = {nullptr};
    std::vector<std::uint32_t> uses;
    for (const LineMatch& line : model.lines) {
        const SetPointer& set = line.*field;
        // Built-in lines are about addresses that no rule names.
        if (set != nullptr && line.line->kind != LineKind::kBuiltIn) {
            const auto known = std::find(sets.begin(), sets.end(), set);
            uses.push_back(static_cast<std::uint32_t>(known - sets.begin()));
            if (known == sets.end()) {
                sets.push_back(set);
            }
        }
    }
    return Dimension(last, sets, uses, preferred).numberIn(0);
}

std::uint8_t leastNamedProtocol(const FamilyModel& model) {
    std::vector<bool> isNamed(256);
    for (const std::uint8_t protocol : {kTcp, kUdp, kIgmp, icmpOf(model.family)}) {
        isNamed[protocol] = true;
    }
    for (const LineMatch& line : model.lines) {
        if (line.protocol) {
            isNamed[*line.protocol] = true;
        }
    }
    // The highest are kept for experiments.
    const auto free = std::find(isNamed.rbegin() + 1, isNamed.rend(), false);
    return static_cast<std::uint8_t>(isNamed.rend() - free - 1);
}

Packet packetOf(const PacketQuestion& question, const FamilyModel& model) {
    constexpr Number kLastPort = 65535;
    Packet packet = question.packet;
    const auto address = [&](const std::optional<Number>& said, SetPointer LineMatch::*field) {
        return said ? *said
                    : leastNamed(
                          model, field, lastAddress(model.family), hostAddresses(model.family));
    };
    const auto port = [&](const std::optional<Number>& said, SetPointer LineMatch::*field) {
        return said ? *said : leastNamed(model, field, kLastPort, clientPorts());
    };
    packet.source = address(question.source, &LineMatch::source);
    packet.destination = address(question.destination, &LineMatch::destination);
    packet.sourcePort = port(question.sourcePort, &LineMatch::sourcePort);
    packet.port = port(question.port, &LineMatch::port);
    if (!question.isProtocolKnown) {
        packet.protocol = leastNamedProtocol(model);
    }
    return packet;
}

void addOnce(const PlannedLine& line, std::vector<Origin>& origins) {
    Origin origin = originOf(line);
    if (std::find(origins.begin(), origins.end(), origin) == origins.end()) {
        origins.push_back(std::move(origin));
    }
}

// All lines of a rule; a built-in line stands for itself.
std::vector<std::string> linesOf(const FamilyModel& model, const PlannedLine& decider) {
    if (decider.kind == LineKind::kBuiltIn) {
        return {decider.line};
    }
    std::vector<std::string> lines;
    for (const LineMatch& line : model.lines) {
        if (haveOneOrigin(*line.line, decider)) {
            lines.push_back(line.line->line);
        }
    }
    return lines;
}

}  // namespace

std::vector<Origin> matchesOf(const Model& model, const Packet& packet) {
    std::vector<Origin> origins;
    for (const LineMatch& line : model.of(packet.family).lines) {
        if (line.effect != Effect::kLog && holds(line, packet)) {
            addOnce(*line.line, origins);
        }
    }
    return origins;
}

Explanation explain(const Model& model, const PacketQuestion& question) {
    const FamilyModel& part = model.of(question.packet.family);
    Explanation answer;
    answer.packet = packetOf(question, part);
    bool isDecided = false;
    for (const LineMatch& line : part.lines) {
        if (!holds(line, answer.packet)) {
            continue;
        }
        if (line.effect == Effect::kLog) {
            if (!isDecided) {
                addOnce(*line.line, answer.log);
            }
        } else if (!isDecided) {
            isDecided = true;
            answer.isAllowed = line.effect == Effect::kAllow;
            answer.decider = originOf(*line.line);
            answer.lines = linesOf(part, *line.line);
        } else if ((line.effect == Effect::kAllow) != answer.isAllowed) {
            addOnce(*line.line, answer.next);
        }
    }
    return answer;
}

}  // namespace zamofw::analysis
