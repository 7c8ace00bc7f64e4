#include "command/answers/changeAnswer.h"

#include <ostream>

#include "command/document/check.h"
#include "command/document/findingText.h"
#include "zamofirewall/controller.h"

namespace zamofw {

void answerChange(const Console& console, bool changed, const std::string& text) {
    if (console.json) {
        console.out << (changed ? "{\"changed\":true}\n" : "{\"changed\":false}\n");
    } else if (!console.quiet && !text.empty()) {
        console.out << text << "\n";
    }
}

Status refusedChange(const Console& console) {
    answerChange(console, false, "");
    return Status::kNo;
}

void noteReload(const Console& console, const std::string& profile) {
    bool enabled = false;
    std::string inForce;
    if (!console.quiet && FW::ZAMOFW().fwStatus(enabled) && enabled &&
        FW::ZAMOFW().fwProfileConfigGet(inForce) && (profile.empty() || inForce == profile)) {
        console.err << "it is in force after `zamofw reload`\n";
    }
}

bool isAccepted(const Console& console, const Findings& findings, bool force) {
    console.err << findingsText(findings);
    if (!hasError(findings) || force) {
        return true;
    }
    console.err << "nothing was changed: the document has errors (--force takes it all the same)\n";
    return false;
}

}  // namespace zamofw
