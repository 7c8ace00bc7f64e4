#include "command/apply/chains.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "command/apply/filterChange.h"
#include "command/apply/jumps.h"
#include "command/apply/programs.h"
#include "command/apply/restoreError.h"
#include "command/console.h"
#include "command/plan/plan.h"
#include "command/startsWith.h"
#include "library/model/names.h"

namespace zamofw {
namespace {

using Lines = std::vector<std::string>;

constexpr const char* kDhcpv6Client = " -p udp --dport 546 -j ACCEPT";

// The table filter of a family, as `iptables -S` prints it.
class Listing {
  public:
    explicit Listing(int family) {
        const ProgramResult result = runProgram({tool(family), "-w", kLockSeconds, "-S"});
        if (result.status != 0) {
            throwIfLockIsHeld(result);
            failedProgram(family, tool(family), result);
        }
        std::istringstream text(result.output);
        for (std::string line; std::getline(text, line);) {
            lines_.push_back(line);
        }
    }

    [[nodiscard]] bool has(const std::string& line) const {
        return std::find(lines_.begin(), lines_.end(), line) != lines_.end();
    }

    [[nodiscard]] Lines rulesOf(const std::string& chain) const {
        Lines rules;
        std::copy_if(
            lines_.begin(), lines_.end(), std::back_inserter(rules), [&](const auto& line) {
                return startsWith(line, "-A " + chain + " ");
            });
        return rules;
    }

  private:
    Lines lines_;
};

// What the empty profile lets through, and answers to a DHCPv6 client, which no connection tracking
// knows: they do not come from the address that was asked.
Lines guardLines(int family) {
    const std::string from = std::string("-A ") + FW::kInputChain + " ";
    const std::string to = std::string("-A ") + FW::kReloadingChain;
    const Plan plan = planProfile(FW::FWPROFILE(), /*mayHaveTunnel=*/false);
    Lines guards;
    for (const PlannedLine& planned : family == 4 ? plan.v4 : plan.v6) {
        if (startsWith(planned.line, from)) {
            guards.push_back(to + " " + planned.line.substr(from.size()));
        }
    }
    if (family == 6) {
        guards.push_back(to + kDhcpv6Client);
    }
    return guards;
}

// The new pair of jumps comes in front of the old ones, and these go in the same commit.
Lines jumpLines(const Listing& listing, const Hook& hook) {
    const std::string begin = std::string("-A ") + hook.name + " -j ";
    const Lines wanted = {begin + FW::kReloadingChain, begin + hook.chain};
    const Lines rules = listing.rulesOf(hook.name);
    Lines found;
    Lines deletions;
    for (std::size_t i = 0; i < rules.size(); ++i) {
        if (std::find(wanted.begin(), wanted.end(), rules[i]) != wanted.end()) {
            found.push_back(rules[i]);
            deletions.push_back(std::string("-D ") + hook.name + " " +
                                std::to_string(i + 1 + wanted.size()));
        }
    }
    if (found == wanted) {
        return {};
    }
    Lines lines;
    for (auto jump = wanted.rbegin(); jump != wanted.rend(); ++jump) {
        lines.push_back(std::string("-I ") + hook.name + " 1 " + jump->substr(begin.size() - 3));
    }
    lines.insert(lines.end(), deletions.rbegin(), deletions.rend());
    return lines;
}

Lines policyLines(const Listing& listing, const char* policy) {
    Lines lines;
    for (const Hook& hook : kHooks) {
        const std::string line = std::string("-P ") + hook.name + " " + policy;
        if (!listing.has(line)) {
            lines.push_back(line);
        }
    }
    return lines;
}

void append(Lines& lines, const Lines& more) {
    lines.insert(lines.end(), more.begin(), more.end());
}

Lines creationLines(const Listing& listing) {
    Lines lines;
    for (const char* const chain : kOurChains) {
        if (!listing.has(std::string("-N ") + chain)) {
            lines.push_back(std::string(":") + chain + " - [0:0]");
        }
    }
    for (const Hook& hook : kHooks) {
        append(lines, jumpLines(listing, hook));
    }
    return lines;
}

Lines openingLines(const Listing& listing) {
    Lines lines = policyLines(listing, "ACCEPT");
    for (const char* const chain : kOurChains) {
        if (!listing.rulesOf(chain).empty()) {
            lines.push_back(std::string("-F ") + chain);
        }
    }
    return lines;
}

bool hasRules(const Listing& listing) {
    return std::all_of(kHooks.begin(), kHooks.end(), [&](const Hook& hook) {
        return !listing.rulesOf(hook.chain).empty();
    });
}

Lines closingLines(const Listing& listing, int family) {
    if (hasRules(listing)) {
        return {};
    }
    Lines lines;
    if (!listing.rulesOf(FW::kReloadingChain).empty()) {
        lines.push_back(std::string("-F ") + FW::kReloadingChain);
    }
    append(lines, guardLines(family));
    append(lines, policyLines(listing, "DROP"));
    return lines;
}

SetUp changeBoth(const std::function<Lines(const Listing&, int family)>& linesFor,
                 const ExecutionLock& lock) {
    SetUp result;
    for (const int family : {4, 6}) {
        try {
            const Listing listing(family);
            result.hadRules = result.hadRules && hasRules(listing);
            const Lines lines = linesFor(listing, family);
            result.isChanged = changeFilter(family, lines, lock) || result.isChanged;
        } catch (const Failure& failure) {
            result.hadRules = false;
            result.problems += "IPv" + std::to_string(family) + ": " + failure.what() + "\n";
            result.problems += failure.remedy().empty() ? "" : failure.remedy() + "\n";
        }
    }
    return result;
}

}  // namespace

SetUp makeChains(Door door, const ExecutionLock& lock) {
    return changeBoth(
        [door](const Listing& listing, int family) {
            Lines lines = creationLines(listing);
            if (door == Door::kOpen) {
                append(lines, openingLines(listing));
            } else if (door == Door::kClosedUntilFilled) {
                append(lines, closingLines(listing, family));
            }
            return lines;
        },
        lock);
}

SetUp openDoor(const ExecutionLock& lock) {
    return changeBoth([](const Listing& listing, int) { return openingLines(listing); }, lock);
}

}  // namespace zamofw
