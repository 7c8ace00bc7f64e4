// The words that a rule may have, and what each of them sets.
#ifndef COMMAND_WORDS_WORDFORMS_H
#define COMMAND_WORDS_WORDFORMS_H

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "command/words/ruleWords.h"

namespace zamofw {

// Of the words of one of these groups a rule has one; labels are free.
enum class Group {
    kVerdict,
    kDirection,
    kSide,
    kFamily,
    kProtocol,
    kPorts,
    kLog,
    kDisabled,
    kName,
    kLabel
};

// The rule as far as it has been said.
struct Reading {
    const Vocabulary& vocabulary;
    FW::FWRULE rule;
    std::map<Group, std::string> said;  // by which word
    std::optional<int> addressFamily;   // that the address has
    std::string address;                // "--from 10.0.0.1", for messages
};

// Sets what the word says. Wrong use when the value makes no sense.
using Take = void (*)(Reading& reading, const std::string& word, const std::string& value);

struct Form {
    const char* word;
    Group group;
    bool hasValue;
    Take take;
};

// Null for a word that no rule has.
[[nodiscard]] const Form* findForm(const std::string& word);

// Every word, for suggestions.
[[nodiscard]] std::vector<std::string> ruleWordList();

}  // namespace zamofw

#endif
