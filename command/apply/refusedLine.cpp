#include "command/apply/refusedLine.h"

#include <algorithm>
#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/predicate.hpp>
#include <boost/algorithm/string/split.hpp>
#include <sstream>
#include <utility>

#include "command/apply/jumps.h"
#include "command/apply/programs.h"
#include "command/apply/scratchNetwork.h"

namespace zamofw {
namespace {

using boost::algorithm::starts_with;

// The words of a rule's line: "-A CHAIN ...".
std::vector<std::string> wordsOf(const std::string& line) {
    std::vector<std::string> words;
    boost::split(words, line, boost::is_any_of(" "), boost::token_compress_on);
    return words;
}

// `table` is the line that opens it, "*filter".
bool restores(int family, const std::string& table, const std::string& lines) {
    const posix::Descriptor file = memoryFile(table + "\n" + lines + "COMMIT\n");
    return runProgram({restoreProgram(family), "-w", kLockSeconds}, file.get()).status == 0;
}

// What the program that takes one rule says about it, where there are these chains and no rule.
std::string wordsAbout(int family,
                       const std::string& table,
                       const std::string& chains,
                       const std::string& rule) {
    // Only the input's parser takes quotes apart.
    if (rule.find('"') != std::string::npos || !restores(family, table, chains)) {
        return "";
    }
    std::vector<std::string> command = {tool(family), "-t", table.substr(1), "-w", kLockSeconds};
    for (const std::string& word : wordsOf(rule)) {
        command.push_back(word);
    }
    return causeIn(runProgram(command).error);
}

std::string emptyChain(const std::string& name) {
    return ":" + name + " - [0:0]\n";
}

bool isJump(const std::string& line) {
    return std::any_of(kHooks.begin(), kHooks.end(), [&line](const Hook& hook) {
        const std::vector<std::string> jumps = jumpsOf(hook);
        return std::find(jumps.begin(), jumps.end(), line) != jumps.end();
    });
}

// The lines that make the chains of a table which programs have made in it. They are empty, but the
// firewall's are called: some rules are refused for what calls their chain.
std::string chainsThere(int family, const std::string& table) {
    std::string chains;
    const ProgramResult saved = runProgram({saveProgram(family), "-t", table.substr(1)});
    std::istringstream lines(saved.output);
    for (std::string line; std::getline(lines, line);) {
        // The built-in ones have a policy: ":INPUT ACCEPT [0:0]".
        const std::size_t end = line.find(" - [");
        if (starts_with(line, ":") && end != std::string::npos) {
            chains += emptyChain(line.substr(1, end - 1));
        } else if (isJump(line)) {
            chains += line + "\n";
        }
    }
    return chains;
}

// In the table that is opened at an index.
class Search {
  public:
    Search(int family, const std::vector<std::string>& lines, std::size_t begin, std::string chains)
        : family_(family), table_(lines[begin]), chains_(std::move(chains)) {
        for (std::size_t i = begin; i < lines.size() && lines[i] != "COMMIT"; ++i) {
            if (starts_with(lines[i], "-A ")) {
                rules_.push_back({lines[i], i});
            }
        }
    }

    [[nodiscard]] RefusedLine run() const {
        RefusedLine found;
        if (!isTaken(0)) {
            return found;
        }
        if (isTaken(rules_.size())) {
            found.search = RefusedLine::Search::kNothingRefused;
            return found;
        }
        std::size_t taken = 0;
        std::size_t refused = rules_.size();
        while (refused - taken > 1) {
            const std::size_t middle = taken + (refused - taken) / 2;
            (isTaken(middle) ? taken : refused) = middle;
        }
        found.search = RefusedLine::Search::kFound;
        found.index = rules_[taken].index;
        found.words = wordsAbout(family_, table_, chains_, rules_[taken].text);
        return found;
    }

  private:
    struct Rule {
        std::string text;
        std::size_t index;
    };

    // Whether the first rules are taken together.
    [[nodiscard]] bool isTaken(std::size_t count) const {
        std::string lines = chains_;
        for (std::size_t i = 0; i < count; ++i) {
            lines += rules_[i].text + "\n";
        }
        return restores(family_, table_, lines);
    }

    int family_;
    std::string table_;
    std::string chains_;
    std::vector<Rule> rules_;
};

}  // namespace

RefusedLine findRefusedLine(int family, const std::vector<std::string>& lines) {
    // Asked for before the network is another one.
    std::vector<Search> searches;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (starts_with(lines[i], "*")) {
            searches.emplace_back(family, lines, i, chainsThere(family, lines[i]));
        }
    }
    const ScratchNetwork network;
    RefusedLine refused;
    for (const Search& search : searches) {
        if (network.isEntered() && refused.search != RefusedLine::Search::kFound) {
            refused = search.run();
        }
    }
    return refused;
}

std::string wordsAboutLine(int family, const std::string& table, const std::string& line) {
    const ScratchNetwork network;
    std::string chains;
    if (table.substr(1) == kFilterTable) {
        for (const char* const chain : kOurChains) {
            chains += emptyChain(chain);
        }
    }
    return network.isEntered() ? wordsAbout(family, table, chains, line) : "";
}

}  // namespace zamofw
