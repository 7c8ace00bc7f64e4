// Runs the sessions in tests/sessions/. A session has a line "$ COMMAND -> OUTCOME" for each
// command (tests/support/session.h); lines that begin with four blanks continue it, and "#" begins
// a remark. REGENERATE_GOLDEN=1 writes the outcomes; review the difference like code.

#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>

#include "tests/support/files.h"
#include "tests/support/session.h"

namespace {

constexpr std::size_t kWidth = 120;
const std::string kSigns = ">!|&/";

class SessionTest : public testing::TestWithParam<std::string> {};

// A text that is too long goes on in lines that begin with four blanks. A sign begins a line rather
// than ending one.
std::string wrapped(std::string text) {
    std::size_t begin = 0;
    while (text.size() - begin > kWidth) {
        std::size_t blank = text.rfind(' ', begin + kWidth);
        while (blank > begin + 4 && kSigns.find(text[blank - 1]) != std::string::npos) {
            blank = text.rfind(' ', blank - 1);
        }
        blank = blank > begin + 4 ? blank : text.find(' ', begin + kWidth);
        if (blank == std::string::npos) {
            break;
        }
        text.replace(blank, 1, "\n    ");
        begin = blank + 1;
    }
    return text;
}

// A remark, a blank line, or a command with its outcome, in one line.
std::string nextPart(std::istream& lines) {
    std::string part;
    std::getline(lines, part);
    for (std::string line; lines.peek() == ' ' && std::getline(lines, line);) {
        part += line.substr(3);
    }
    return part;
}

TEST_P(SessionTest, GoesAsWritten) {
    const std::string path = std::string(SESSION_DIRECTORY) + "/" + GetParam();
    const bool regenerate = std::getenv("REGENERATE_GOLDEN") != nullptr;
    std::istringstream lines(test::readFile(path));
    test::Session session;
    std::string text;
    while (lines.peek() != EOF) {
        const std::string expected = nextPart(lines);
        std::string actual = expected;
        if (expected.rfind("$ ", 0) == 0) {
            const std::string command = expected.substr(2, expected.find(" -> ") - 2);
            const std::string outcome = session.run(command);
            actual = "$ " + command + (outcome.empty() ? "" : " -> " + outcome);
        }
        text += wrapped(actual) + "\n";
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

INSTANTIATE_TEST_SUITE_P(All, SessionTest, testing::ValuesIn(test::namesIn(SESSION_DIRECTORY)),
                         [](const auto& file) {
                             return file.param.substr(0, file.param.find('.'));
                         });

}  // namespace
