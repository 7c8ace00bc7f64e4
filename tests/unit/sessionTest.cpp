// Runs the sessions in tests/sessions/. A session is a text of commands, "$ command", each followed
// by what must come of it; "#" begins a remark, and blank lines do not count. REGENERATE_GOLDEN=1
// writes what does come of it.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "tests/support/fakePlatform.h"
#include "tests/support/session.h"
#include "tests/support/store.h"

namespace {

class SessionTest : public testing::TestWithParam<std::string> {};

bool isRemark(const std::string& line) { return line.empty() || line[0] == '#'; }

TEST_P(SessionTest, GoesAsWritten) {
    test::clearFiles();
    test::clearPlatform();
    test::writeServices();
    test::writeModuleList();
    test::Session session;
    const std::string path = std::string(SESSION_DIRECTORY) + "/" + GetParam() + ".txt";
    const std::string expected = test::readFile(path);
    ASSERT_FALSE(expected.empty()) << path;

    std::istringstream lines(expected);
    std::string actual;
    for (std::string line; std::getline(lines, line);) {
        if (isRemark(line)) {
            actual += line + "\n";
        } else if (line.rfind("$ ", 0) == 0) {
            actual += line + "\n" + session.run(line.substr(2));
        }
    }
    if (std::getenv("REGENERATE_GOLDEN") != nullptr) {
        test::writeFile(path, actual);
    }
    EXPECT_EQ(actual, expected);
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
