// What other processes and threads do in the middle of an operation.

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <functional>
#include <thread>

#include "tests/support/processes.h"
#include "tests/support/store.h"
#include "tests/support/systemCalls.h"
#include "zamofirewall/zamofirewall.h"

namespace {

using Lines = std::vector<std::string>;

FW::FWPROFILE profileOf(const std::string& name, std::size_t rules = 0) {
    FW::FWPROFILE profile;
    profile.name = name;
    profile.rules["eth0"].resize(rules);
    return profile;
}

class Interleaved : public testing::Test {
  protected:
    Interleaved() {
        test::clearFiles();
        test::writeProfile("1.json", profileOf("home"));
        test::writeProfile("2.json", profileOf("office"));
        test::writeSettings(false, "home");
    }

    // Names in the files, "" for what is no profile.
    Lines storedNames() {
        Lines names;
        for (const std::string& file : test::namesIn(test::kStore)) {
            const Json::Value document = test::json(test::readFile(test::kStore + file));
            names.push_back(document.isObject() ? document["name"].asString() : "");
        }
        return names;
    }

    // Before the given access to the path, the first one being number 1.
    static void beforeAccess(test::SystemCalls& calls, const std::string& path, int number,
                             const std::function<void()>& action) {
        calls.onAccess = [&calls, path, number, action, used = 0](const std::string& at) mutable {
            if (at == path && ++used == number) {
                const auto once = action;
                calls.onAccess = nullptr;
                once();
            }
        };
    }
    static void beforeFirstSync(test::SystemCalls& calls, const std::function<void()>& action) {
        calls.onSync = [&calls, action] {
            const auto once = action;
            calls.onSync = nullptr;
            once();
        };
    }

    FW::ZAMOFW_PROFILE profiles_;
};

TEST_F(Interleaved, TheStatusSurvivesARenameAndAChoice) {
    test::SystemCalls calls;
    beforeFirstSync(calls, [] { test::writeSettings(true, "home"); });
    EXPECT_TRUE(profiles_.profileRename("home", "cabin"));
    EXPECT_EQ(test::json(test::readFile(test::kSettings)),
              test::json("{'profile': 'cabin', 'status': true}"));

    // Between the first look at the settings and the second.
    test::writeSettings(false, "cabin");
    beforeAccess(calls, test::kSettings, 3, [] { test::writeSettings(true, "cabin"); });
    EXPECT_TRUE(FW::ZAMOFW().fwProfileConfigSet("office", /*reload=*/false));
    EXPECT_EQ(test::json(test::readFile(test::kSettings)),
              test::json("{'profile': 'office', 'status': true}"));
}

TEST_F(Interleaved, ARenamedProfileIsNotTheOneThatWasLookedUp) {
    test::SystemCalls calls;
    const std::string first = std::string(test::kStore) + "1.json";
    const auto rename = [] { test::writeProfile("1.json", profileOf("cabin")); };
    // Once the index is made.
    beforeAccess(calls, first, 2, rename);
    FW::FWPROFILE profile;
    EXPECT_FALSE(profiles_.profileGet("home", profile));

    test::writeProfile("1.json", profileOf("home"));
    beforeAccess(calls, first, 2, rename);
    EXPECT_FALSE(profiles_.profileRemoveServ("ssh"));
    EXPECT_EQ(storedNames(), (Lines{"cabin", "office", ""}));

    // Between reading all of them and writing the second.
    const auto renameOffice = [] { test::writeProfile("2.json", profileOf("desk")); };
    const std::function<bool()> edits[] = {
        [this] { return profiles_.profileRemoveServ("ssh"); },
        [this] { return profiles_.profileChangeAdapter("eth0", "eth1", false); },
        [this] {
            return profiles_.profileAddServToReserve("eth0", "a", FW::FW_POLICY_DENY, false);
        }};
    for (const auto& edit : edits) {
        test::writeProfile("2.json", profileOf("office"));
        beforeFirstSync(calls, renameOffice);
        EXPECT_FALSE(edit());
        EXPECT_EQ(storedNames(), (Lines{"cabin", "desk", ""}));
    }
}

// Creates, changes, reads and deletes profiles of its own, one that all share, and one that all
// create and delete. Returns the step that went wrong.
int useProfiles(const std::string& own) {
    constexpr std::size_t kRules = 20;
    FW::ZAMOFW_JSON_DB database;
    const auto isWhole = [](FW::FWPROFILE& profile) {
        const std::size_t rules = profile.rules["eth0"].size();
        return rules == 0 || rules == kRules;
    };
    for (int round = 0; round < 15; ++round) {
        FW::FWPROFILE mine;
        FW::FWPROFILE shared;
        FW::FWPROFILE fleeting;
        if (!database.profileCreate(own) || !database.profileSet(own, profileOf(own, kRules)) ||
            !database.profileGet(own, mine) || mine.rules["eth0"].size() != kRules) {
            return 1;
        }
        (void)database.profileCreate("fleeting");
        if (!database.profileSet("fleeting", profileOf("fleeting", kRules)) ||
            !database.profileSet("shared", profileOf("shared", kRules)) ||
            !database.profileGet("shared", shared) || shared.rules["eth0"].size() != kRules) {
            return 2;
        }
        if (database.profileGet("fleeting", fleeting) && !isWhole(fleeting)) {
            return 3;
        }
        if (!database.profileDelete("fleeting") || !database.profileDelete(own) ||
            database.profileExist(own)) {
            return 4;
        }
    }
    return 0;
}

TEST_F(Interleaved, ProcessesKeepEveryProfileWholeAndLeaveNothingBehind) {
    ASSERT_TRUE(profiles_.profileCreate("shared"));
    std::vector<pid_t> children;
    for (const char* own : {"a", "b", "c"}) {
        children.push_back(test::startProcess([own] { return useProfiles(own); }));
    }
    for (const pid_t child : children) {
        EXPECT_EQ(test::waitFor(child), 0);
    }
    while (profiles_.profileExist("fleeting")) {
        ASSERT_TRUE(profiles_.profileDelete("fleeting"));
    }
    Lines names = storedNames();
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (Lines{"", "home", "office", "shared"}));
    Lines locks = test::namesIn(test::kStore);
    for (std::string& name : locks) {
        name += ".lock";
    }
    EXPECT_EQ(test::namesIn("/run/lock/firewall"), locks);
}

TEST_F(Interleaved, ThreadsShareFilesAndDisturbNoRandomNumbers) {
    constexpr int kNumbers = 20000;
    const auto draw = [] {
        std::vector<int> numbers;
        std::srand(1);
        for (int i = 0; i < kNumbers; ++i) {
            numbers.push_back(std::rand());
        }
        return numbers;
    };
    const std::vector<int> expected = draw();
    const std::string path = std::string(test::kStore) + "shared";
    const std::string text(20000, 'x');
    ASSERT_TRUE(FW::jsonFileDump(text, path));
    std::vector<std::thread> threads;
    std::atomic<int> failures = 0;
    for (int number = 0; number < 3; ++number) {
        threads.emplace_back([&] {
            for (int i = 0; i < 100; ++i) {
                Json::Value value;
                const bool done = FW::jsonFileDump(text, path) && FW::jsonFileLoad(value, path) &&
                                  value.asString() == text;
                failures += done ? 0 : 1;
                (void)FW::getLockFile(path);
                (void)FW::ZAMOFW_JSON_DB().profilePathNameGen(
                    test::json("{'a': {'fileName': '1'}}"));
            }
        });
    }
    EXPECT_EQ(draw(), expected);
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(failures, 0);
}

}  // namespace
