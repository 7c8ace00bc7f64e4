// `zamofw check [PROFILE] [--all] [--client ADDRESS [--port N]]`
#ifndef COMMAND_ANSWERS_CHECKANSWER_H
#define COMMAND_ANSWERS_CHECKANSWER_H

#include <optional>
#include <string>

#include "command/answers/meaningFindings.h"
#include "command/console.h"
#include "command/document/check.h"
#include "command/document/target.h"

namespace zamofw {

struct CheckRequest {
    TargetWords target;
    bool all = false;                   // every stored profile
    std::optional<std::string> client;  // that must not be locked out; else the SSH connection's
    std::optional<std::string> port;    // which it must reach; else that of the connection, or 22
};

// The faults of the text, and what its rules mean, in the order of the text.
[[nodiscard]] Findings checkDocument(const Document& document,
                                     const CheckContext& context,
                                     const std::optional<Client>& client);

// {"ok":B,"findings":[...]}, or the findings as a compiler prints them. kNo when there is an error.
[[nodiscard]] Status checkAnswer(const Console& console, const CheckRequest& request);

}  // namespace zamofw

#endif
