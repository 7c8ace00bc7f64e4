// `zamofw assert FILE [PROFILE]`
#ifndef COMMAND_ANSWERS_ASSERTANSWER_H
#define COMMAND_ANSWERS_ASSERTANSWER_H

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "command/analysis/intents.h"
#include "command/console.h"
#include "command/document/target.h"
#include "command/words/ruleWords.h"
#include "zamofirewall/ruleModel.h"

namespace zamofw {

// What an administrator wants of every profile in force, if the file is there.
constexpr const char* kIntentsFile = "/usr/zamo/etc/firewall.d/intents";

struct AssertRequest {
    std::string file;  // "-" is standard input
    TargetWords target;
};

// Says of each intent in the file whether it holds for every packet. kNo when one does not.
[[nodiscard]] Status assertAnswer(const Console& console, const AssertRequest& request);

// A line of the file:
//   allow|deny WORDS [in INTERFACE [out INTERFACE]]
// with the words of a rule for families, addresses, protocol, ports and services, with or without
// their dashes; "tcp 22" is short for --proto tcp --port 22.
struct IntentLine {
    std::size_t line = 1;
    std::string text;
    analysis::Intent intent;
    FW::FWRULE rule;  // what its words say
};

// Throws Failure (kWrongUse), with file and line, for one that makes no sense.
[[nodiscard]] std::vector<IntentLine> intentsFromText(const std::string& text,
                                                      const std::string& file,
                                                      const Vocabulary& vocabulary);

// For each intent what breaks it, if anything does.
[[nodiscard]] std::vector<std::optional<analysis::Violation>> violationsOf(
    const std::vector<IntentLine>& intents, const FW::FWPROFILE& profile);

// Throws Failure (kNo) when the profile breaks an intent of kIntentsFile; (kWrongUse) when the file
// makes no sense. Nothing when there is no such file; the profile is not asked for then.
void refuseBrokenIntents(const std::function<FW::FWPROFILE()>& profileOfCaller);

}  // namespace zamofw

#endif
