// `zamofw explain --in INTERFACE --from A --proto P [--port N] ...`
#ifndef COMMAND_ANSWERS_EXPLAINANSWER_H
#define COMMAND_ANSWERS_EXPLAINANSWER_H

#include <optional>
#include <string>

#include "command/console.h"
#include "command/document/target.h"

namespace zamofw {

struct ExplainRequest {
    TargetWords target;
    std::string in;
    std::optional<std::string> out;  // then the packet is forwarded
    std::optional<std::string> from;
    std::optional<std::string> to;
    std::optional<std::string> family;  // where no address says it
    std::string protocol;
    std::optional<std::string> port;
    std::optional<std::string> sourcePort;
    std::optional<std::string> state;
};

// Says what happens to one packet, and why. kNo when it is denied.
[[nodiscard]] Status explainAnswer(const Console& console, const ExplainRequest& request);

}  // namespace zamofw

#endif
