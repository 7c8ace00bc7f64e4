// Checks of documents, without touching anything but what the context tells.
#ifndef COMMAND_DOCUMENT_CHECK_H
#define COMMAND_DOCUMENT_CHECK_H

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "command/document/document.h"
#include "command/document/finding.h"

namespace zamofw {

// What a check needs to know of the system.
struct CheckContext {
    std::set<std::string> services;  // of the catalogue, those switched off included
    std::set<std::string> adapters;  // that rules may use now, the predefined ones included
    // Whether a country has data for the family (4 or 6). Asked for every entry of every rule, so
    // that it should remember its answers.
    std::function<bool(const std::string& code, int family)> hasCountry;
    // Those of `services` that give no line: switched off in the catalogue, or without ports.
    std::set<std::string> idleServices = {};
};

// Every fault of a profile document, in the order of the text.
[[nodiscard]] Findings checkProfile(const Document& document, const CheckContext& context);

// The same for an exported configuration: its shape, settings, and every profile in it.
[[nodiscard]] Findings checkExport(const Document& document, const CheckContext& context);

// The stored profiles that the store never finds, because a file that sorts before theirs carries
// the same name.
[[nodiscard]] Findings checkStoredNames(const std::vector<const Document*>& stored);

[[nodiscard]] bool hasError(const Findings& findings);

}  // namespace zamofw

#endif
