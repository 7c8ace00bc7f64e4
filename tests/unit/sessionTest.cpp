// Runs the sessions in tests/sessions/. A session has a line "$ COMMAND -> OUTCOME" for each
// command (tests/support/session.h); lines that begin with four blanks continue it, and "#" begins
// a remark. REGENERATE_GOLDEN=1 writes the outcomes; review the difference like code.

#include <gtest/gtest.h>

#include <boost/algorithm/string/replace.hpp>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "tests/support/files.h"
#include "tests/support/session.h"

namespace {

constexpr std::size_t kWidth = 120;

class SessionTest : public testing::TestWithParam<std::string> {};

// Whether a line may end at this blank: behind a ";", or a "," in the command, or before a sign.
bool isBreak(const std::string& text, std::size_t blank, std::size_t outcome) {
    static const std::string signs = ">!|&/";
    const std::string around = text.substr(blank - 1, 4);
    return around[1] == ' ' &&
           (around[0] == ';' || (around[0] == ',' && blank < outcome) || blank == outcome ||
            (around.size() == 4 && around[3] == ' ' && signs.find(around[2]) != std::string::npos));
}

// A text that is too long goes on in lines that begin with four blanks.
std::string wrapped(const std::string& text) {
    const std::size_t outcome = text.find(" -> ");
    std::string result;
    std::size_t lineBegin = 0;
    for (std::size_t begin = 0, end = 1; begin < text.size(); begin = end++) {
        while (end < text.size() && !isBreak(text, end, outcome)) {
            ++end;
        }
        if (begin > 0 && result.size() - lineBegin + end - begin > kWidth) {
            result += "\n   ";
            lineBegin = result.size() - 3;
        }
        result += text.substr(begin, end - begin);
    }
    return result + "\n";
}

// A remark, a blank line, or a command with its outcome.
std::string nextPart(std::istream& lines) {
    std::string part;
    std::getline(lines, part);
    part += "\n";
    for (std::string line; lines.peek() == ' ' && std::getline(lines, line);) {
        part += line + "\n";
    }
    return part;
}

std::string commandOf(const std::string& part) {
    const std::string text = boost::replace_all_copy(part.substr(2), "\n    ", " ");
    return text.substr(0, std::min(text.find(" -> "), text.find('\n')));
}

TEST_P(SessionTest, GoesAsWritten) {
    const std::string path = std::string(SESSION_DIRECTORY) + "/" + GetParam() + ".txt";
    const bool regenerate = std::getenv("REGENERATE_GOLDEN") != nullptr;
    std::istringstream lines(test::readFile(path));
    test::Session session;
    std::string text;
    while (lines.peek() != EOF) {
        const std::string expected = nextPart(lines);
        std::string actual = expected;
        if (expected.rfind("$ ", 0) == 0) {
            const std::string command = commandOf(expected);
            const std::string outcome = session.run(command);
            actual = wrapped("$ " + command + (outcome.empty() ? "" : " -> " + outcome));
        }
        text += actual;
        EXPECT_EQ(actual, expected) << path;
        if (actual != expected && !regenerate) {
            return;  // what follows was written for what should have come of it
        }
    }
    EXPECT_FALSE(text.empty()) << path;
    if (regenerate) {
        test::writeFile(path, text);
    }
}

std::vector<std::string> sessions() {
    std::vector<std::string> names;
    for (const std::string& name : test::namesIn(SESSION_DIRECTORY)) {
        names.push_back(std::filesystem::path(name).stem());
    }
    return names;
}

INSTANTIATE_TEST_SUITE_P(All, SessionTest, testing::ValuesIn(sessions()),
                         [](const auto& name) { return name.param; });

}  // namespace
