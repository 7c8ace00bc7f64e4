#include "command/apply/kernelState.h"

#include <array>
#include <sstream>
#include <string_view>

#include "command/apply/programs.h"
#include "command/apply/restoreError.h"
#include "command/console.h"
#include "command/startsWith.h"
#include "library/model/names.h"

namespace zamofw {
namespace {

constexpr std::array<const char*, 2> kBuiltIn = {"INPUT", "FORWARD"};

std::string policyOf(int family, const std::string& hook) {
    // Whether the lock is free is of little interest here, so that five seconds are enough.
    const ProgramResult result = runProgram({tool(family), "-w", "5", "-S", hook});
    const std::string start = "-P " + hook + " ";
    if (result.status != 0 || !startsWith(result.output, start)) {
        return "unknown";
    }
    return result.output.substr(start.size(), result.output.find('\n') - start.size());
}

// The chain that a line of iptables-save belongs to: ":CHAIN ..." or "[1:60] -A CHAIN ...".
std::string_view chainOf(std::string_view line) {
    std::size_t begin = 1;
    if (!startsWith(line, ":")) {
        begin = line.find("-A ");
        if (begin == std::string_view::npos) {
            return {};
        }
        begin += 3;
    }
    return line.substr(begin, line.find(' ', begin) - begin);
}

template <typename Names>
bool isOneOf(std::string_view name, const Names& names) {
    for (const char* const candidate : names) {
        if (name == candidate) {
            return true;
        }
    }
    return false;
}

}  // namespace

Policies kernelPolicies(int family) try {
    return {policyOf(family, "INPUT"), policyOf(family, "FORWARD")};
} catch (const Failure&) {
    return {};
}

SavedChains::SavedChains(int family) {
    const ProgramResult result = runProgram({saveProgram(family), "-t", "filter", "-c"});
    table_ = result.output;
    const bool isWhole = result.status == 0 && table_.rfind("\nCOMMIT\n") != std::string::npos;
    if (!isWhole) {
        failedProgram(family, saveProgram(family), result);
    }
    for (const char* const chain : kOurChains) {
        if (table_.find(std::string("\n:") + chain + " ") == std::string::npos) {
            chainIsMissing(family, chain);
        }
    }
}

std::string SavedChains::input() const {
    std::string chains = "*filter\n";
    std::string rules;
    std::istringstream lines(table_);
    for (std::string line; std::getline(lines, line);) {
        const std::string_view chain = chainOf(line);
        if (line[0] == ':' && (isOneOf(chain, kOurChains) || isOneOf(chain, kBuiltIn))) {
            chains += line + "\n";
        } else if (line[0] == '[' && isOneOf(chain, kOurChains)) {
            rules += line + "\n";
        }
    }
    return chains + rules + "COMMIT\n";
}

bool SavedChains::hasGuards() const {
    return table_.find(std::string("] -A ") + FW::kReloadingChain + " ") != std::string::npos;
}

Guards requireChains() {
    const bool hasGuards4 = SavedChains(4).hasGuards();
    const bool hasGuards6 = SavedChains(6).hasGuards();
    return hasGuards4 || hasGuards6 ? Guards::kLeft : Guards::kNone;
}

void chainIsMissing(int family, const std::string& chain) {
    failed("the chain " + chain + " is missing for IPv" + std::to_string(family) +
               ": the firewall has no place for its rules",
           "run /usr/zamo/sbin/zamofw-chains as root, as the system does at its start");
}

}  // namespace zamofw
