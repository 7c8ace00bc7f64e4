// The names that this machine knows: services, countries and adapters.
#ifndef COMMAND_ANSWERS_SYSTEMNAMES_H
#define COMMAND_ANSWERS_SYSTEMNAMES_H

#include <zamo/serviceconf.h>

#include <functional>
#include <memory>
#include <string>

#include "command/document/check.h"
#include "command/words/ruleWords.h"

namespace zamofw {

[[nodiscard]] Vocabulary systemVocabulary();

[[nodiscard]] CheckContext systemCheckContext();

using ServiceCatalogue = std::unique_ptr<ZAMOFwServiceList, void (*)(ZAMOFwServiceList*)>;
// Null when it cannot be read.
[[nodiscard]] ServiceCatalogue loadServiceCatalogue();

// Visits the services of the catalogue in the order of their names, those switched off included.
using VisitService = std::function<void(const std::string& name, const ZAMOFwService& service)>;
void forEachService(const VisitService& visit);

}  // namespace zamofw

#endif
