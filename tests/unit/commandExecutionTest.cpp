#include <gtest/gtest.h>

#include "tests/support/fakePlatform.h"
#include "tests/support/store.h"
#include "tests/support/systemLog.h"
#include "zamofirewall/controller.h"

namespace {

using Lines = std::vector<std::string>;

class CommandExecution : public testing::Test {
  protected:
    CommandExecution() {
        test::clearFiles();
        test::clearPlatform();
    }

    FW::ZAMOFW controller_;
    test::SystemLog log_;
};

std::string words(std::size_t count) {
    std::string line = "a";
    for (std::size_t i = 1; i < count; ++i) {
        line += " a";
    }
    return line;
}

TEST_F(CommandExecution, TakesLinesUpToItsLimits) {
    const std::string tooMany = "zamoFW: #Arguments exceeds limit";
    const std::string empty = "zamoFW: cmd is empty or arguments exceeding limit";
    struct Case {
        const char* name;
        std::string line;
        Lines log;
    };
    const std::vector<Case> cases = {
        {"one word", "/bin/x", {}},
        {"blanks around and between", "  /bin/x   -F  y ", {}},
        {"empty", "", {empty}},
        {"blanks only", "   ", {empty}},
        {"255 words", words(255), {}},
        {"256 words", words(256), {tooMany}},
        {"255 words and a trailing blank", words(255) + " ", {}},
        {"255 words and two trailing blanks", words(255) + "  ", {tooMany}},
        {"1024 bytes in one word", std::string(1023, 'w'), {}},
        {"1025 bytes in one word", std::string(1024, 'w'), {empty}},
        {"1024 bytes, the last word from 1022", std::string(1021, 'w') + " x", {}},
        {"1025 bytes, the last word from 1022", std::string(1021, 'w') + " xx", {empty}},
        {"a word from 1023", std::string(1022, 'w') + " x", {tooMany}},
        {"an empty word from 1023", std::string(1022, 'w') + "  ", {tooMany}},
        {"far too long a word before another", std::string(5000, 'w') + " x", {tooMany}},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        test::platform().events.clear();
        EXPECT_EQ(controller_.cmdExec(row.line), row.log.empty());
        EXPECT_EQ(log_.take(), row.log);
        EXPECT_EQ(test::platform().events.size(), row.log.empty() ? 1U : 0U);
    }
    EXPECT_TRUE(controller_.cmdExec("  /bin/x   -F  y "));
    EXPECT_EQ(test::platform().events.back(), "/bin/x -F y");
}

}  // namespace
