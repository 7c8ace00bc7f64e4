#include "library/profiles/policyStep.h"

#include <array>

namespace FW {
namespace {

struct Step {
    std::int32_t answer;
    bool isLast;
};
constexpr std::int32_t kRulePolicy = -1;
constexpr bool kStop = true;
constexpr bool kNext = false;

constexpr std::int32_t kAllow = FW_POLICY_ALLOW;
constexpr std::int32_t kDeny = FW_POLICY_DENY;
constexpr std::int32_t kPartial = FW_POLICY_PARTIAL;
constexpr std::int32_t kPartialAllow = FW_POLICY_PARTIAL_ALLOW;
constexpr std::int32_t kPartialDeny = FW_POLICY_PARTIAL_DENY;

// One step for each policy of the rule: ALLOW, DENY, any other.
using Row = std::array<Step, 3>;

// Management programs show the answers, so the tables stay as they are, surprises included: a rule
// for some addresses that agrees with the answer so far resets it to ALLOW.

// clang-format off
// For a rule that covers every address.
constexpr std::array<Row, 4> kEveryAddress = {{
    // ALLOW                   DENY                     other
    {{{kRulePolicy, kStop},    {kRulePolicy, kStop},    {kRulePolicy, kStop}}},  // ALLOW, DENY, NONE
    {{{kAllow, kStop},         {kPartialAllow, kStop},  {kAllow, kStop}}},       // PARTIAL_ALLOW
    {{{kPartialDeny, kStop},   {kDeny, kStop},          {kAllow, kStop}}},       // PARTIAL_DENY
    {{{kAllow, kStop},         {kAllow, kStop},         {kAllow, kStop}}},       // PARTIAL, unknown
}};

// For a rule that covers only some addresses.
constexpr std::array<Row, 5> kSomeAddresses = {{
    // ALLOW                   DENY                     other
    {{{kAllow, kNext},         {kAllow, kNext},         {kAllow, kNext}}},  // equal to the rule's policy
    {{{kPartialAllow, kNext},  {kPartialDeny, kNext},   {kAllow, kNext}}},  // ALLOW, DENY, NONE
    {{{kAllow, kNext},         {kPartial, kStop},       {kAllow, kStop}}},  // PARTIAL_ALLOW
    {{{kPartial, kStop},       {kAllow, kNext},         {kAllow, kStop}}},  // PARTIAL_DENY
    {{{kAllow, kStop},         {kAllow, kStop},         {kAllow, kStop}}},  // PARTIAL, unknown
}};
// clang-format on

const Row& everyAddressRow(std::int32_t answer) {
    switch (answer) {
        case FW_POLICY_ALLOW:
        case FW_POLICY_DENY:
        case FW_POLICY_NONE:
            return kEveryAddress[0];
        case FW_POLICY_PARTIAL_ALLOW:
            return kEveryAddress[1];
        case FW_POLICY_PARTIAL_DENY:
            return kEveryAddress[2];
    }
    return kEveryAddress[3];
}

const Row& someAddressesRow(std::int32_t answer, std::int32_t policy) {
    switch (answer) {
        case FW_POLICY_ALLOW:
        case FW_POLICY_DENY:
        case FW_POLICY_NONE:
            return kSomeAddresses[answer == policy ? 0 : 1];
        case FW_POLICY_PARTIAL_ALLOW:
            return kSomeAddresses[2];
        case FW_POLICY_PARTIAL_DENY:
            return kSomeAddresses[3];
    }
    return kSomeAddresses[4];
}

const Step& stepFor(const FWRULE& rule, std::int32_t answer) {
    const Row& row = rule.ipGroup == FW_IP_GROUP_ALL ? everyAddressRow(answer)
                                                     : someAddressesRow(answer, rule.policy);
    switch (static_cast<std::int32_t>(rule.policy)) {
        case FW_POLICY_ALLOW:
            return row[0];
        case FW_POLICY_DENY:
            return row[1];
    }
    return row[2];
}

}  // namespace

PolicyStep policyStep(const FWRULE& rule, FW_POLICY answer) {
    const Step& step = stepFor(rule, answer);
    return {step.answer == kRulePolicy ? rule.policy : static_cast<FW_POLICY>(step.answer),
            step.isLast};
}

}  // namespace FW
