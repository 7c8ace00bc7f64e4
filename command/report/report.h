// What a report tells, and the page that tells it.
#ifndef COMMAND_REPORT_REPORT_H
#define COMMAND_REPORT_REPORT_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "command/document/finding.h"
#include "command/report/serviceMatrix.h"
#include "zamofirewall/ruleModel.h"

namespace zamofw::report {

// A part of the report, or why there is none.
template <typename Value>
struct Part {
    std::optional<Value> value;
    std::string reason;
};

struct Counter {
    std::uint64_t packets = 0;
    std::uint64_t bytes = 0;
};
// By adapter and position; a rule without a line is not in it.
using Counters = std::map<std::pair<std::string, std::size_t>, Counter>;

// Where the kernel is not what the profile says.
struct Deviation {
    int family = 4;
    std::string kind;  // "missing", ...
    std::string chain;
    std::string line;
    std::string origin;  // "rule 2 of eth0"; empty for what no rule asks for
};

struct Change {
    std::string time;  // RFC 3339
    std::string user;
    std::string from;  // empty: the machine itself
    std::string result;
    std::string command;
};

struct Report {
    std::string host;
    std::string time;  // RFC 3339
    bool isEnabled = false;
    std::string profile;
    std::string file;  // of the profile
    Part<FW::FWPROFILE> rules;
    Part<Counters> counters;
    Part<ServiceMatrix> matrix;
    Findings findings;
    Part<std::vector<Deviation>> kernel;
    Part<std::vector<Change>> changes;  // the last one first
};

// One document in HTML that needs nothing from outside, and no scripts.
[[nodiscard]] std::string page(const Report& report);

}  // namespace zamofw::report

#endif
