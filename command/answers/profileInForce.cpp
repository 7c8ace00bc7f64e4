#include "command/answers/profileInForce.h"

#include <ostream>
#include <string>

#include "command/answers/assertAnswer.h"
#include "command/answers/systemNames.h"
#include "command/document/check.h"
#include "command/document/findingText.h"
#include "library/model/names.h"
#include "zamofirewall/controller.h"

namespace zamofw {
bool isFirewallEnabled() {
    bool enabled = false;
    if (!FW::ZAMOFW().fwStatus(enabled)) {
        failed(std::string("it is not known whether the firewall is enabled: ") +
                   FW::kSettingsFile + " cannot be read",
               "mend the file, or delete it; `zamofw enable` then writes it anew");
    }
    return enabled;
}

void showFindings(const Console& console, const Target& profile, Errors errors) {
    if (errors == Errors::kKnown) {
        return;
    }
    const Findings findings = checkProfile(profile.document, systemCheckContext());
    console.err << findingsText(findings);
    if (errors == Errors::kRefuse && hasError(findings)) {
        throw Failure(Status::kNo,
                      "the profile `" + profile.name + "` has errors, and nothing was changed",
                      "mend it, or say --force to use it all the same");
    }
    if (errors == Errors::kRefuse) {
        refuseBrokenIntents([&profile] { return profileOf(profile); });
    }
}

}  // namespace zamofw
