#include "command/answers/meaningAnswer.h"

#include <json/reader.h>

#include <limits>
#include <map>
#include <ostream>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "command/analysis/difference.h"
#include "command/answers/changeJson.h"
#include "command/answers/meaning.h"
#include "command/words/quoting.h"

namespace zamofw {
namespace {

using analysis::Change;
using analysis::Hook;

std::string wayText(const Change& change) {
    const auto name = [](const std::string& interface) {
        return interface == analysis::Interfaces::kOther ? "other interfaces" : shown(interface);
    };
    return "in " + name(change.in) +
           (change.hook == Hook::kForward ? " out " + name(change.out) : "");
}

// One line of text, which can stand for several changes.
struct ChangeLine {
    bool isAllowedAfter;
    std::string what;    // "tcp 22"
    std::string whom;    // "from 192.168.1.7"
    std::string ways;    // "in `eth0`"
    std::string family;  // "IPv4"
};

ChangeLine lineOf(const Change& change) {
    ChangeLine line = {change.isAllowedAfter,
                       change.protocol,
                       "from " + addressesText(*change.sources, change.family),
                       wayText(change),
                       "IPv" + std::to_string(change.family)};
    const analysis::Intervals everyPort = {{0, 65535}};
    if (change.ports && *change.ports != everyPort) {
        line.what += " " + portsText(*change.ports);
    }
    if (change.sourcePorts) {
        line.what += " source-port " + portsText(*change.sourcePorts);
    }
    if (change.destinations) {
        line.whom += " to " + addressesText(*change.destinations, change.family);
    }
    return line;
}

// Makes one line of those that differ in one member alone.
void join(std::vector<ChangeLine>& lines,
          std::string ChangeLine::*member,
          const std::string& separator) {
    std::map<std::tuple<bool, std::string, std::string, std::string, std::string>, std::size_t>
        known;
    std::vector<ChangeLine> joined;
    for (ChangeLine& line : lines) {
        const std::string value = std::exchange(line.*member, "");
        const auto key =
            std::tuple(line.isAllowedAfter, line.what, line.whom, line.ways, line.family);
        const auto [entry, isNew] = known.try_emplace(key, joined.size());
        if (isNew) {
            line.*member = value;
            joined.push_back(std::move(line));
        } else {
            joined[entry->second].*member += separator + value;
        }
    }
    lines = std::move(joined);
}

std::vector<ChangeLine> linesOf(const std::vector<Change>& changes) {
    std::vector<ChangeLine> lines;
    lines.reserve(changes.size());
    for (const Change& change : changes) {
        lines.push_back(lineOf(change));
    }
    join(lines, &ChangeLine::ways, "; ");
    join(lines, &ChangeLine::what, ", ");
    join(lines, &ChangeLine::family, ", ");
    return lines;
}

std::string toText(const ChangeLine& line) {
    return std::string(line.isAllowedAfter ? "+ allowed: " : "- denied: ") + line.what + " " +
           line.whom + " (" + line.family + ") " + line.ways + "\n";
}

std::string toText(const std::vector<Change>& changes, std::size_t most) {
    const std::vector<ChangeLine> lines = linesOf(changes);
    std::string text;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (i == most) {
            return text + "and " + std::to_string(lines.size() - most) +
                   " more (`zamofw diff --meaning` lists them all)\n";
        }
        text += toText(lines[i]);
    }
    return text;
}

// Throws Failure when a profile cannot be translated, or holds lines that are not understood.
std::vector<Change> changesInMeaning(const FW::FWPROFILE& before,
                                     const FW::FWPROFILE& after,
                                     std::size_t mostSteps) {
    analysis::ModelReader reader(countryRanges());
    const auto one = meaningOf(before, before.name, reader);
    const auto other = meaningOf(after, after.name, reader);
    requireKnown(*one);
    requireKnown(*other);
    return analysis::difference(one->model, other->model, mostSteps);
}

}  // namespace

std::string meaningText(const FW::FWPROFILE& before, const FW::FWPROFILE& after) try {
    constexpr std::size_t kMostChangesShown = 10;
    const std::vector<Change> changes = changesInMeaning(before, after, analysis::kFewSteps);
    return changes.empty()
               ? ""
               : "packets that get another verdict:\n" + toText(changes, kMostChangesShown);
} catch (const Failure& failure) {
    return "packets that get another verdict: " + std::string(failure.what()) + "\n";
}

Json::Value meaningJson(const FW::FWPROFILE& before, const FW::FWPROFILE& after) try {
    std::ostringstream text;
    writeChanges(changesInMeaning(before, after, analysis::kFewSteps), text);
    Json::Value json;
    return Json::Reader().parse(text.str(), json) ? json : Json::Value();
} catch (const Failure&) {
    return {};
}

void showMeaning(const Console& console, const FW::FWPROFILE& before, const FW::FWPROFILE& after) {
    if (!console.json && !console.quiet) {
        const std::string text = meaningText(before, after);
        console.err << (text.empty() ? "no packet gets another verdict\n" : text);
    }
}

Status meaningAnswer(const Console& console, const DiffRequest& request) {
    const std::vector<Target> targets = diffTargets(request);
    const std::vector<Change> changes =
        changesInMeaning(profileOf(targets[0]), profileOf(targets[1]), analysis::kAllSteps);
    if (console.json) {
        console.out << "{\"changes\":";
        writeChanges(changes, console.out);
        console.out << "}\n";
    } else {
        console.out << toText(changes, std::numeric_limits<std::size_t>::max());
    }
    return changes.empty() ? Status::kDone : Status::kNo;
}

}  // namespace zamofw
