// The words of a rule, one a line: words -> rule -> words -> rule.

#include <sstream>

#include "command/console.h"
#include "fuzz/harness.h"

void fuzz::run(const std::string& text) {
    std::vector<std::string> words;
    std::istringstream lines(text);
    for (std::string word; std::getline(lines, word);) {
        words.push_back(word);
    }
    try {
        const FW::FWRULE rule = zamofw::ruleFromWords(words, vocabulary());
        require(zamofw::wordsOfRule(rule, vocabulary()).has_value(), "a rule of words has words");
        requireSameWords(rule);
    } catch (const zamofw::Failure& failure) {
        require(failure.status() == zamofw::Status::kWrongUse, "a wrong word is wrong use");
    }
}
