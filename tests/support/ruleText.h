// Rules in words, for tests:
//
//   [off] allow|deny|none|CODE  any | ports LIST | services LIST | reserved LIST
//         [some] [source] [tcp|udp|both|CODE]
//
// LIST is separated by commas. "some": for one address, else for all.
#ifndef TESTS_SUPPORT_RULETEXT_H
#define TESTS_SUPPORT_RULETEXT_H

#include <string>

#include "zamofirewall/ruleModel.h"

namespace test {

FW::FW_POLICY parsePolicy(const std::string& word);
std::string policyText(FW::FW_POLICY policy);

FW::FWRULE parseRule(const std::string& text);
std::string ruleText(const FW::FWRULE& rule);

}  // namespace test

#endif
