// The figures of the firewall in the text format that the node exporter of Prometheus collects.
#ifndef COMMAND_ANSWERS_METRICSTEXT_H
#define COMMAND_ANSWERS_METRICSTEXT_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "command/answers/ruleHits.h"

namespace zamofw {

struct RuleFigures {
    std::string adapter;
    std::size_t position = 0;
    std::string name;
    Hits hits;
};

// Times are in seconds since 1970, durations in seconds.
struct ChangeFigures {
    double time = 0;
    std::optional<double> duration;
    int result = 0;  // the exit status
};

struct ReloadFigures {
    double time = 0;
    double duration = 0;
    bool isApplied = false;
};

// What is not known is left out.
struct Metrics {
    bool isEnabled = false;
    std::string profile;
    std::string kernel;  // "same", "differs", "unknown"
    std::optional<std::size_t> rules;
    std::vector<RuleFigures> hits;
    std::optional<ChangeFigures> lastChange;
    std::optional<ReloadFigures> lastReload;
};

[[nodiscard]] std::string metricsText(const Metrics& metrics);

}  // namespace zamofw

#endif
