#include "command/answers/operands.h"

#include <algorithm>
#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/split.hpp>
#include <cctype>

#include "command/console.h"
#include "command/startsWith.h"
#include "command/words/quoting.h"
#include "command/words/suggestion.h"

namespace zamofw {
namespace {

constexpr const char* kFreeWords = "WORDS";

bool isOption(const std::string& word) {
    return word.size() > 1 && word.front() == '-';
}

std::vector<std::string> operandNames(const std::string& usage) {
    std::vector<std::string> names;
    boost::split(names, usage, boost::is_any_of(" "));
    const auto isCommand = [](const std::string& name) {
        return std::islower(static_cast<unsigned char>(name.front())) != 0;
    };
    names.erase(names.begin(), std::find_if_not(names.begin(), names.end(), isCommand));
    const auto isFirstOption = [](const std::string& name) {
        return name.front() == '-' || startsWith(name, "[-");
    };
    names.erase(std::find_if(names.begin(), names.end(), isFirstOption), names.end());
    return names;
}

bool hasValue(const std::string& word, const std::string& option) {
    return startsWith(word, option + "=");
}

void checkOperand(const std::string& word,
                  const std::string& name,
                  const std::string& usage,
                  const std::vector<std::string>& options) {
    if (isOption(word)) {
        const std::string near = suggestion(word, options);
        wrongUse("there is no option " + shown(word) + " here" + (near.empty() ? "" : ": " + near),
                 usage);
    }
    if (word.empty()) {
        wrongUse(name + " is empty", usage);
    }
}

}  // namespace

bool takeFlag(const std::string& option, std::vector<std::string>& words) {
    const auto valued = std::find_if(words.begin(), words.end(), [&](const std::string& word) {
        return hasValue(word, option);
    });
    if (valued != words.end()) {
        wrongUse(shown(option) + " takes no value", "say " + option + " alone");
    }
    const auto count = std::count(words.begin(), words.end(), option);
    if (count > 1) {
        wrongUse(shown(option) + " is said twice", "say it once");
    }
    words.erase(std::remove(words.begin(), words.end(), option), words.end());
    return count == 1;
}

std::optional<std::string> takeValue(const std::string& option, std::vector<std::string>& words) {
    std::optional<std::string> value;
    for (auto word = words.begin(); word != words.end();) {
        if (*word != option && !hasValue(*word, option)) {
            ++word;
            continue;
        }
        if (value) {
            wrongUse(shown(option) + " is said twice", "say it once");
        }
        if (*word != option) {
            value = word->substr(option.size() + 1);
        } else {
            word = words.erase(word);
            if (word == words.end() || isOption(*word)) {
                wrongUse("the value of " + shown(option) + " is missing", "say it after the word");
            }
            value = *word;
        }
        word = words.erase(word);
    }
    return value;
}

void checkOperands(const std::vector<std::string>& words,
                   const std::string& usage,
                   const std::vector<std::string>& options) {
    const std::string remedy = "usage: zamofw " + usage;
    const std::vector<std::string> names = operandNames(usage);
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (names[i] == kFreeWords) {
            return;
        }
        if (i < words.size()) {
            checkOperand(words[i], names[i], remedy, options);
        } else if (names[i].front() != '[') {
            wrongUse(names[i] + " is missing", remedy);
        }
    }
    if (words.size() > names.size()) {
        checkOperand(words[names.size()], "", remedy, options);
        wrongUse(shown(words[names.size()]) + " is a word too many", remedy);
    }
}

}  // namespace zamofw
