// The rules that the last transaction put into force, for a start that fails to make its own.
#ifndef COMMAND_APPLY_KEPTRULES_H
#define COMMAND_APPLY_KEPTRULES_H

#include <optional>
#include <string_view>

#include "command/plan/plan.h"

namespace zamofw {

// Root's own, in a directory that nobody else may look into.
constexpr const char* kKeptRulesFile = "in-force.rules";
constexpr const char* kSavedRulesFile = "trial.rules";
constexpr const char* kSetAsideRulesFile = "trial.rules.aside";

// Both inputs as one file in /var/lib/zamofw/, replaced as a whole. It is not synced: at worst a
// power cut leaves none, and rules that are in force must not be refused because a disk is full.
void keepRules(std::string_view v4, std::string_view v6);
void keepRules(const Plan& plan);
[[nodiscard]] bool writeRules(const char* file, const RestoreInputs& inputs);

// None when nothing whole is kept.
[[nodiscard]] std::optional<RestoreInputs> readRules(const char* file);

// A firewall that is switched off has no last rules.
void dropKeptRules();

}  // namespace zamofw

#endif
