// A rule in words: "allow --from 192.168.1.0/24 --service ssh".
#ifndef COMMAND_WORDS_RULEWORDS_H
#define COMMAND_WORDS_RULEWORDS_H

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "zamofirewall/ruleModel.h"

namespace zamofw {

// The names that words are checked against, and that near misses are suggested from.
struct Vocabulary {
    // The services of the catalogue, those switched off included, each with the protocol of its
    // destination ports.
    std::map<std::string, std::int32_t> services;
    // The codes with data on this machine, each with the families (4, 6) that it has data for.
    std::map<std::string, std::set<int>> countries;
};

// The rule that the words say. Throws Failure with kWrongUse at the first word that makes no sense,
// with a suggestion for a near miss.
//
// What the words leave open gets these values: every address is group ALL of both families, every
// port group ALL with protocol BOTH; a rule about services has the protocol that the library's own
// update of service rules would set.
[[nodiscard]] FW::FWRULE ruleFromWords(const std::vector<std::string>& words,
                                       const Vocabulary& vocabulary);

// The words that say exactly this rule on this machine; none when no words can. ruleFromWords() of
// the words makes the same rule again.
[[nodiscard]] std::optional<std::vector<std::string>> wordsOfRule(const FW::FWRULE& rule,
                                                                  const Vocabulary& vocabulary);

// Where a word of wordsOfRule() belongs in a table: the verdict, the addresses (with direction and
// family), the ports (with the protocol), or the rest. A value belongs where its word does.
enum class WordColumn { kVerdict, kAddresses, kPorts, kRest };
constexpr std::size_t kWordColumns = 4;
[[nodiscard]] WordColumn columnOf(const std::string& word);

// Whether the value of the word is the word after it.
[[nodiscard]] bool takesValue(const std::string& word);

}  // namespace zamofw

#endif
