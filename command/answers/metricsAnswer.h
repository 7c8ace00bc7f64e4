// `zamofw status --metrics`
#ifndef COMMAND_ANSWERS_METRICSANSWER_H
#define COMMAND_ANSWERS_METRICSANSWER_H

#include <optional>
#include <string>

#include "command/console.h"

namespace zamofw {

// Prints the figures of the firewall for the node exporter of Prometheus, or writes them into a
// file: whoever reads it finds all of the old ones or all of the new ones.
[[nodiscard]] Status metricsAnswer(const Console& console, const std::optional<std::string>& file);

}  // namespace zamofw

#endif
