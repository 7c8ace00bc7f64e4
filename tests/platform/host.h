// What all tests of the platform need: its host's files, processes and system log.
#ifndef TESTS_PLATFORM_HOST_H
#define TESTS_PLATFORM_HOST_H

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zamo/core.h>

#include <cerrno>
#include <string>
#include <vector>

#include "tests/support/files.h"
#include "tests/support/processes.h"
#include "tests/support/systemLog.h"

namespace test {

// Runs the action, with its expectations, in another process.
inline void tryInChild(const std::string& name, const std::function<void()>& action) {
    const auto fails = [&action] {
        action();
        return testing::Test::HasFailure() ? 1 : 0;
    };
    EXPECT_EQ(inChild(fails), 0) << name;
}

}  // namespace test

using namespace test;

#endif
