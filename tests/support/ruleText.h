// Rules in words, for tests:
//
//   [off] allow|deny|none|CODE WORD...
//
//   any | ports LIST | services LIST | reserved LIST
//   tcp udp both icmp igmp         the protocol
//   destination source             which ports LIST holds
//   everywhere | some | host LIST | subnet LIST | range LIST | country LIST | nowhere LIST
//                                  the addresses; "some" is "host 10.0.0.9"
//   from to                        whether those are source or destination addresses
//   v4 v6 v46                      the address family
//   in out                         the direction on the adapter
//   log  table=TEXT  chains=LIST  name=TEXT  labels=LIST
//   FIELD=CODE                     any code: ipType=7, ipGroup=6, portDirect=2
//
// A LIST is separated by commas, "-" is an empty one, '' an empty text and "~" a blank. A field
// that is not said is as in a new rule, but the rule is for every address.
#ifndef TESTS_SUPPORT_RULETEXT_H
#define TESTS_SUPPORT_RULETEXT_H

#include <string>
#include <vector>

#include "zamofirewall/ruleModel.h"

namespace test {

std::vector<std::string> split(const std::string& text, const std::string& separator);

FW::FW_POLICY parsePolicy(const std::string& word);
std::string policyText(FW::FW_POLICY policy);

bool isFirstWordOfRule(const std::string& word);

// An unknown word throws. Chains are added to the two of a new rule.
FW::FWRULE parseRule(const std::string& text);

// Every field but the index, where it is not as in a new rule.
std::string ruleText(const FW::FWRULE& rule);

}  // namespace test

#endif
