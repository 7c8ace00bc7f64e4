#include <boost/algorithm/string/join.hpp>

#include "command/answers/changeAnswer.h"
#include "command/answers/serviceAnswers.h"
#include "command/answers/serviceCatalogue.h"
#include "command/history/change.h"
#include "command/history/configuration.h"
#include "command/words/quoting.h"
#include "library/model/names.h"
#include "zamofirewall/profile.h"

namespace zamofw {
namespace {

void reserve(const std::string& name, bool deny) {
    const FW::FW_POLICY policy = deny ? FW::FW_POLICY_DENY : FW::FW_POLICY_ALLOW;
    if (!FW::ZAMOFW_PROFILE().profileAddServToReserve(
            FW::kGlobalAdapter, name, policy, /*reload=*/false)) {
        failed("the service " + shown(name) + " could not be put into every profile",
               "`zamofw check --all` shows what is wrong with the profiles; `zamofw undo` takes "
               "back what was changed before the failure");
    }
}

}  // namespace

Status serviceReserve(const Console& console,
                      const std::vector<std::string>& call,
                      const std::vector<std::string>& names,
                      bool deny) {
    requireRoot("reserving a service");
    for (const std::string& name : names) {
        (void)requiredService(name);
    }
    return recordedChange(call, [&] {
        const std::string before = exportText(readableConfiguration());
        for (const std::string& name : names) {
            reserve(name, deny);
        }
        const bool changed = exportText(readableConfiguration()) != before;
        answerChange(console,
                     changed,
                     "in every profile now " + std::string(deny ? "closed" : "open") + ": " +
                         boost::algorithm::join(names, ", "));
        if (changed) {
            noteReload(console, "");
        }
        return Status::kDone;
    });
}

}  // namespace zamofw
