// Intents as text.

#include <algorithm>
#include <array>
#include <cctype>
#include <sstream>
#include <utility>

#include "command/answers/assertAnswer.h"
#include "command/startsWith.h"
#include "command/words/quoting.h"
#include "command/words/suggestion.h"

namespace zamofw {
namespace {

using Words = std::vector<std::string>;

constexpr std::array<const char*, 8> kValueWords = {
    "from", "to", "from-country", "to-country", "proto", "port", "source-port", "service"};
constexpr const char* kFamilyWord = "family";
constexpr const char* kForm =
    "an intent is: allow|deny, then any of from, to, from-country, to-country, proto, port, "
    "source-port, service and family with their values, then in INTERFACE and out INTERFACE";

bool isValueWord(const std::string& word) {
    return word == kFamilyWord ||
           std::find(kValueWords.begin(), kValueWords.end(), word) != kValueWords.end();
}

bool isProtocol(const std::string& word) {
    return word == "tcp" || word == "udp" || word == "both" || word == "icmp" || word == "igmp";
}

bool beginsWithDigit(const std::string& word) {
    return !word.empty() && std::isdigit(static_cast<unsigned char>(word.front())) != 0;
}

Words splitWords(const std::string& line) {
    std::istringstream stream(line.substr(0, line.find('#')));
    Words words;
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    return words;
}

// Reads one line.
class IntentReader {
  public:
    explicit IntentReader(Words words) : words_(std::move(words)) {}

    IntentLine read(const Vocabulary& vocabulary) {
        readVerdict();
        while (next_ < words_.size()) {
            readWord();
        }
        IntentLine line;
        line.intent = intent_;
        line.rule = ruleFromWords(ruleWords_, vocabulary);
        return line;
    }

  private:
    void readVerdict() {
        const std::string verdict = words_[next_++];
        if (verdict != "allow" && verdict != "deny") {
            wrongUse(shown(verdict) + " is no verdict", kForm);
        }
        intent_.isAllowed = verdict == "allow";
        ruleWords_.push_back(verdict);
    }

    std::string valueOf(const std::string& word) {
        if (next_ == words_.size()) {
            wrongUse("the value of " + shown(word) + " is missing", kForm);
        }
        return words_[next_++];
    }

    void readInterface(const std::string& word, std::optional<std::string>& interface) {
        if (interface) {
            wrongUse(shown(word) + " is said twice", "say it once");
        }
        interface = valueOf(word);
    }

    void readWord() {
        const std::string word = words_[next_++];
        const bool hasDashes = startsWith(word, "--");
        const std::string name = hasDashes ? word.substr(2) : word;
        if (word == "in") {
            readInterface(word, intent_.in);
        } else if (word == "out") {
            readInterface(word, intent_.out);
        } else if (hasDashes && isValueWord(name.substr(0, name.find('=')))) {
            ruleWords_.push_back(word);
            if (name.find('=') == std::string::npos) {
                ruleWords_.push_back(valueOf(word));
            }
        } else if (isValueWord(name)) {
            ruleWords_.push_back("--" + name);
            ruleWords_.push_back(valueOf(word));
        } else if (isProtocol(word)) {
            ruleWords_.insert(ruleWords_.end(), {"--proto", word});
            if (next_ < words_.size() && beginsWithDigit(words_[next_])) {
                ruleWords_.insert(ruleWords_.end(), {"--port", words_[next_++]});
            }
        } else {
            refuse(word);
        }
    }

    [[noreturn]] static void refuse(const std::string& word) {
        Words known(kValueWords.begin(), kValueWords.end());
        known.insert(known.end(), {kFamilyWord, "in", "out", "tcp", "udp", "both", "icmp", "igmp"});
        const std::string near = suggestion(word, known);
        wrongUse(shown(word) + " is no word of an intent" + (near.empty() ? "" : ": " + near),
                 kForm);
    }

    Words words_;
    std::size_t next_ = 0;
    Words ruleWords_;
    analysis::Intent intent_;
};

}  // namespace

std::vector<IntentLine> intentsFromText(const std::string& text,
                                        const std::string& file,
                                        const Vocabulary& vocabulary) {
    std::vector<IntentLine> intents;
    std::istringstream lines(text);
    std::size_t number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        const Words words = splitWords(line);
        if (words.empty()) {
            continue;
        }
        try {
            intents.push_back(IntentReader(words).read(vocabulary));
        } catch (const Failure& failure) {
            throw Failure(failure.status(),
                          file + ":" + std::to_string(number) + ": " + failure.what(),
                          failure.remedy());
        }
        intents.back().line = number;
        for (const std::string& word : words) {
            intents.back().text += (intents.back().text.empty() ? "" : " ") + word;
        }
    }
    return intents;
}

}  // namespace zamofw
