// The `rule` and `policy` commands, which read their words themselves.

#include "command/answers/policyAnswer.h"
#include "command/answers/ruleAnswers.h"
#include "command/commandTable.h"

namespace zamofw {

Commands ruleCommands() {
    return {
        {"rule list",
         "[PROFILE] [ADAPTER] [--hits] [--file FILE]",
         "rules in words",
         nullptr,
         ruleList},
        {"rule add",
         "PROFILE ADAPTER WORDS [--force]",
         "a rule behind the others; WORDS, in any order, each at most once:\n"
         "      allow|deny|none, --from A, --to A, --from-country C,C, --to-country C,C,\n"
         "      --proto tcp|udp|both|icmp|igmp, --port P,P, --source-port P,P, --service S,S,\n"
         "      --in, --out, --log, --disabled, --name TEXT, --label TEXT, --family 4|6|both;\n"
         "      A is an address, ADDRESS/PREFIX, ADDRESS/MASK, FIRST-LAST or any",
         nullptr,
         ruleAdd},
        {"rule insert",
         "PROFILE ADAPTER POSITION WORDS [--force]",
         "a rule before another",
         nullptr,
         ruleInsert},
        {"rule replace",
         "PROFILE ADAPTER POSITION WORDS [--force]",
         "another rule in its place",
         nullptr,
         ruleReplace},
        {"rule remove",
         "PROFILE ADAPTER POSITION [--force]",
         "take a rule away",
         nullptr,
         ruleRemove},
        {"rule move",
         "PROFILE ADAPTER FROM TO [--force]",
         "a rule to another position",
         nullptr,
         ruleMove},
        {"rule enable",
         "PROFILE ADAPTER POSITION [--force]",
         "let a rule count again",
         nullptr,
         ruleEnable},
        {"rule disable",
         "PROFILE ADAPTER POSITION [--force]",
         "keep a rule, and pass it over",
         nullptr,
         ruleDisable},
        {"policy",
         "PROFILE ADAPTER allow|deny|none [--force]",
         "the default of an adapter",
         nullptr,
         policySet},
    };
}

}  // namespace zamofw
