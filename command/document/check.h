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

// The names of the service catalogue.
struct ServiceNames {
    std::set<std::string> known;  // those switched off included
    std::set<std::string> idle;  // of these, those that give no line: switched off or without ports
};

// What a check needs to know of the system. The functions are asked only when a rule names a
// service or a country, for each entry of each rule, and should remember their answers: reading the
// files of all services takes longer than the check of some hundred rules.
struct CheckContext {
    std::function<const ServiceNames&()> services;
    std::set<std::string> adapters;  // that rules may use now, the predefined ones included
    // Whether a country has data for the family (4 or 6).
    std::function<bool(const std::string& code, int family)> hasCountry;
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
