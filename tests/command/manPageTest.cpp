// The manual page has the same commands, operands and options as the program's own help.

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>

#include "command/commandLine.h"
#include "tests/support/files.h"

namespace zamofw {
namespace {

using Calls = std::vector<std::string>;

Calls sorted(Calls calls) {
    std::sort(calls.begin(), calls.end());
    return calls;
}

// "check [PROFILE] [--all]  what is wrong" -> "check PROFILE --all"
Calls callsInHelp() {
    std::ostringstream out;
    std::ostringstream err;
    const Console console = {false, false, false, false, false, false, out, err};
    EXPECT_EQ(parseCommandLine({"--help"}).answer(console), Status::kDone);
    Calls calls;
    std::istringstream lines(out.str());
    for (std::string line; std::getline(lines, line);) {
        const bool isCall = line.size() > 2 && line.compare(0, 2, "  ") == 0 &&
                            std::islower(static_cast<unsigned char>(line[2])) != 0;
        if (isCall) {
            std::string call = line.substr(2, line.find("  ", 2) - 2);
            call.erase(std::remove_if(call.begin(), call.end(),
                                      [](char byte) { return byte == '[' || byte == ']'; }),
                       call.end());
            calls.push_back(std::move(call));
        }
    }
    return sorted(std::move(calls));
}

// ".It Cm check Oo Ar PROFILE Oc Op Fl -all" -> "check PROFILE --all"
std::string callOfItem(const std::string& item) {
    static const std::set<std::string> kMacros = {"Cm", "Ar", "Oo", "Oc", "Op"};
    std::string call;
    std::string gap;
    std::istringstream words(item);
    for (std::string word; words >> word;) {
        if (word == "Ns") {
            gap = "";
        } else if (word == "Fl") {
            call += gap + "-";
            gap = "";
        } else if (kMacros.count(word) == 0) {
            call += gap + word;
            gap = " ";
        }
    }
    return call;
}

Calls callsInPage() {
    Calls calls;
    std::istringstream lines(test::readFile(MAN_PAGE));
    const std::string start = ".It Cm ";
    for (std::string line; std::getline(lines, line);) {
        const std::string call =
            line.compare(0, start.size(), start) == 0 ? callOfItem(line.substr(start.size())) : "";
        // The verdicts of a rule are an item as well.
        if (!call.empty() && call != "allow | deny | none") {
            calls.push_back(call);
        }
    }
    return sorted(std::move(calls));
}

TEST(ManPage, NamesEveryCommandAndOption) {
    EXPECT_GT(callsInHelp().size(), 40U);
    EXPECT_EQ(callsInPage(), callsInHelp());
}

}  // namespace
}  // namespace zamofw
