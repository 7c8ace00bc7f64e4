// A line as input for the restore programs: their parser must see the words that a program started
// with the line would get.

#include "command/plan/plan.h"
#include "fuzz/harness.h"

namespace {

using Words = std::vector<std::string>;

Words wordsOfLine(const std::string& line) {
    Words words;
    for (std::size_t begin = 0; begin < line.size();) {
        const std::size_t end = std::min(line.find(' ', begin), line.size());
        if (end > begin) {
            const std::string word = line.substr(begin, end - begin);
            words.push_back(word.substr(0, word.find('\0')));
        }
        begin = end + 1;
    }
    return words;
}

// As iptables-restore splits a line: at blanks, tabs and line feeds outside quotes. Inside, a
// backslash takes the next character as it is.
Words wordsOfInput(const std::string& line) {
    Words words;
    std::string word;
    bool isOpen = false;
    bool isQuoted = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char byte = line[i];
        if (isQuoted && byte == '\\') {
            word += line[++i];
        } else if (byte == '"') {
            isQuoted = !isQuoted;
            isOpen = true;
        } else if (!isQuoted && (byte == ' ' || byte == '\t' || byte == '\n')) {
            if (isOpen) {
                words.push_back(word);
            }
            word.clear();
            isOpen = false;
        } else {
            word += byte;
            isOpen = true;
        }
    }
    return words;
}

}  // namespace

void fuzz::run(const std::string& text) {
    zamofw::Plan plan;
    plan.v4.emplace_back();
    plan.v4.back().line = text;
    try {
        const std::string input = zamofw::restoreInput(plan, 4);
        const std::string begin = "-F FIREWALL_RELOADING\n";
        std::string rest = input.substr(input.find(begin) + begin.size());
        Words words = wordsOfLine(text);
        if (words.size() >= 2 && words[0] == "-t") {
            const std::string table = words[1] + '\n';
            words.erase(words.begin(), words.begin() + 2);
            if (rest.rfind("COMMIT\n*" + table, 0) == 0) {
                rest.erase(0, 8 + table.size());
            } else {
                require(table == "filter\n", "a line stays in its table");
            }
        }
        const std::size_t end = rest.find('\n') + 1;
        require(wordsOfInput(rest.substr(0, end)) == words, "the words are those of the line");
        require(rest.substr(end) == "COMMIT\n", "a line stays one line");
    } catch (const zamofw::UnsayableLine&) {
        return;
    }
}
