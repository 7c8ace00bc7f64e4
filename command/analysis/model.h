// The lines of a plan as typed matches.
#ifndef COMMAND_ANALYSIS_MODEL_H
#define COMMAND_ANALYSIS_MODEL_H

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "command/analysis/numbers.h"
#include "command/plan/plannedLine.h"

namespace zamofw::analysis {

// Null: every number.
using SetPointer = std::shared_ptr<const NumberSet>;

enum class Hook { kInput, kForward };
enum class Effect { kAllow, kDeny, kLog };

// A line. What matters for new packets that are not from lo comes from rules and defaults alone.
struct LineMatch {
    Hook hook = Hook::kInput;
    Effect effect = Effect::kAllow;
    std::string in;   // as the line names them, a `+` at the end included; empty for any
    std::string out;  // only forwarded packets have one
    std::optional<std::uint8_t> protocol;
    SetPointer source;
    SetPointer destination;
    SetPointer sourcePort;
    SetPointer port;
    bool isForEstablished = false;   // and for no other packet
    bool isForMessageTypes = false;  // ICMP types that packets here never have
    const PlannedLine* line = nullptr;
};

struct FamilyModel {
    int family = 4;
    std::vector<LineMatch> lines;  // in the order of the plan
};

struct UnknownLine {
    int family = 4;
    const PlannedLine* line = nullptr;
};

// It points into the plan that it was made of.
struct Model {
    FamilyModel v4 = {4, {}};
    FamilyModel v6 = {6, {}};
    // Lines that are not for the firewall's chains, or that iptables would refuse, or that hold
    // what no line of ours holds. Nothing is guessed about them.
    std::vector<UnknownLine> unknown;

    [[nodiscard]] const FamilyModel& of(int family) const { return family == 4 ? v4 : v6; }
};

// The address ranges of a country; none when there is no data for the family.
using CountryRanges = std::function<std::optional<Intervals>(const std::string& code, int family)>;

// Makes models of plans. Models of one reader share the sets that their lines have in common.
class ModelReader {
  public:
    explicit ModelReader(CountryRanges countries);
    ~ModelReader();
    ModelReader(const ModelReader&) = delete;
    ModelReader& operator=(const ModelReader&) = delete;

    [[nodiscard]] Model read(const Plan& plan);

  private:
    class Sets;
    std::unique_ptr<Sets> sets_;
};

// What decides about a packet, or the rule that a line came from.
struct Origin {
    enum class Kind { kBuiltIn, kRule, kDefault, kEnd };
    Kind kind = Kind::kEnd;
    std::string adapter;
    std::optional<std::size_t> position;
    std::string name;
};
[[nodiscard]] bool operator==(const Origin& one, const Origin& other);
[[nodiscard]] Origin originOf(const PlannedLine& line);
[[nodiscard]] bool haveOneOrigin(const PlannedLine& one, const PlannedLine& other);

// Whether the line's name of an interface stands for the interface.
[[nodiscard]] bool namesInterface(const std::string& pattern, const std::string& interface);

// The names of interfaces that rules' lines hold.
[[nodiscard]] std::set<std::string> interfacesOf(const Model& model);

// The numbers of protocols that have names here, and names for all of them: "tcp", "47".
constexpr std::uint8_t kTcp = 6;
constexpr std::uint8_t kUdp = 17;
constexpr std::uint8_t kIgmp = 2;
[[nodiscard]] constexpr std::uint8_t icmpOf(int family) {
    return family == 4 ? 1 : 58;
}
[[nodiscard]] constexpr bool hasPorts(std::uint8_t protocol) {
    return protocol == kTcp || protocol == kUdp;
}
[[nodiscard]] std::string protocolName(std::uint8_t protocol, int family);

}  // namespace zamofw::analysis

#endif
