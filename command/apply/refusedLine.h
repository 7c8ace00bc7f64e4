// Which of many lines the kernel refuses.
#ifndef COMMAND_APPLY_REFUSEDLINE_H
#define COMMAND_APPLY_REFUSEDLINE_H

#include <cstddef>
#include <string>
#include <vector>

namespace zamofw {

struct RefusedLine {
    enum class Search {
        kFound,
        kNothingRefused,  // all lines are taken, so that something else was wrong
        kImpossible,      // there is no place to try them
    };
    Search search = Search::kImpossible;
    std::size_t index = 0;
    std::string words;  // what the program says about this line alone
};

// The first refused line of an input for restore. The kernel names no line when it refuses a whole
// table, so that parts of the input are tried in a network namespace that nobody else sees, among
// the chains that the real one has.
[[nodiscard]] RefusedLine findRefusedLine(int family, const std::vector<std::string>& lines);

// What the program says about a rule's line in a table ("*filter") where there are only the
// firewall's own chains. Empty when it takes the line, or cannot be asked.
[[nodiscard]] std::string wordsAboutLine(int family,
                                         const std::string& table,
                                         const std::string& line);

}  // namespace zamofw

#endif
