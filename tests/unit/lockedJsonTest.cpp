#include "zamofirewall/lockedJson.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <boost/interprocess/exceptions.hpp>
#include <csignal>
#include <filesystem>

#include "tests/support/processes.h"
#include "tests/support/store.h"
#include "tests/support/systemLog.h"

namespace {

using Lines = std::vector<std::string>;

class LockedJson : public testing::Test {
  protected:
    LockedJson() { test::clearFiles(); }

    const std::string path_ = std::string(test::kStore) + "a.json";
    test::SystemLog log_;
};

TEST_F(LockedJson, WritesAndReadsADocument) {
    EXPECT_TRUE(FW::jsonFileDump(test::json("{'b': [1, 2], 'a': 'x'}"), path_));
    EXPECT_EQ(test::readFile(path_), "{\n   \"a\" : \"x\",\n   \"b\" : [ 1, 2 ]\n}\n");
    EXPECT_FALSE(test::exists(path_ + ".tmp"));

    Json::Value value;
    EXPECT_TRUE(FW::jsonFileLoad(value, path_));
    EXPECT_EQ(value, test::json("{'b': [1, 2], 'a': 'x'}"));
    EXPECT_EQ(log_.take(), Lines{});
}

TEST_F(LockedJson, ReportsWhyAFileCannotBeRead) {
    Json::Value value;
    EXPECT_FALSE(FW::jsonFileLoad(value, path_));
    EXPECT_EQ(log_.take(), Lines{"utils: File " + path_ + " does not exist"});
    EXPECT_FALSE(test::exists("/var/lock/firewall"));

    const Lines unparsable = {"utils: Failed to parse Json value of " + path_};
    for (const std::string& text : {std::string(), std::string("{\"a\": "), std::string("{'a': 1}"),
                                    std::string(5000, '[')}) {
        test::writeFile(path_, text);
        EXPECT_FALSE(FW::jsonFileLoad(value, path_)) << text;
        EXPECT_EQ(log_.take(), unparsable) << text;
    }
    std::filesystem::remove(path_);
    std::filesystem::create_directory(path_);
    EXPECT_FALSE(FW::jsonFileLoad(value, path_));
    EXPECT_EQ(log_.take(), unparsable);
}

TEST_F(LockedJson, LeavesTheOldFileWhenTheNewOneCannotBeWrittenWhole) {
    const std::string directory = std::string(test::kStore) + "small/";
    const std::string path = directory + "b.json";
    std::filesystem::create_directory(directory);
    ASSERT_EQ(mount("small", directory.c_str(), "tmpfs", 0, "size=16k"), 0);
    EXPECT_TRUE(FW::jsonFileDump(test::json("{'a': 1}"), path));
    EXPECT_FALSE(FW::jsonFileDump(std::string(100000, 'x'), path));
    EXPECT_EQ(log_.take(), Lines{"utils: Failed to rename to " + path});
    EXPECT_EQ(test::readFile(path), "{\n   \"a\" : 1\n}\n");
    EXPECT_FALSE(test::exists(path + ".tmp")) << "it would keep the disk full";
    EXPECT_EQ(umount(directory.c_str()), 0);

    EXPECT_FALSE(FW::jsonFileDump(1, path + "/no/such/file"));
    EXPECT_EQ(log_.take(), Lines{"utils: Failed to open json file " + path + "/no/such/file.tmp"});
    std::filesystem::create_directories(path + "/x");
    EXPECT_FALSE(FW::jsonFileDump(1, path));
    EXPECT_EQ(log_.take(), Lines{"utils: Failed to rename to " + path});
    EXPECT_TRUE(test::exists(path + ".tmp"));
}

TEST_F(LockedJson, NamesAndMakesTheLockFile) {
    EXPECT_EQ(FW::getLockFile("/a/b/settings.json"), "/var/lock/firewall/settings.json.lock");
    EXPECT_EQ(FW::getLockFile("/c/settings.json"), FW::getLockFile("/a/b/settings.json"));
    EXPECT_TRUE(test::exists("/var/lock/firewall/settings.json.lock"));
    EXPECT_EQ(FW::getLockFile("/" + std::string(1012, 'd') + "/123456789012"),
              "/var/lock/firewall/123456789.lock");
    EXPECT_EQ(log_.take(), Lines{});

    ASSERT_EQ(mount("ro", "/run/lock/firewall", "tmpfs", MS_RDONLY, ""), 0);
    EXPECT_EQ(FW::getLockFile("x.json"), "/tmp/x.json.lock");
    EXPECT_EQ(umount("/run/lock/firewall"), 0);
    std::filesystem::remove_all("/var/lock/firewall");
    test::writeFile("/run/lock/firewall", "");
    EXPECT_EQ(FW::getLockFile("x.json"), "/tmp/x.json.lock");
    EXPECT_EQ(log_.take(), (Lines{"debug utils: Failed to create path: Read-only file system",
                                  "debug utils: Failed to create path: Not a directory"}));
}

TEST_F(LockedJson, ThrowsWhenTheLockFileCannotBeOpened) {
    std::filesystem::create_directories("/run/lock/firewall/a.json.lock");
    EXPECT_THROW((void)FW::jsonFileDump(1, path_), boost::interprocess::interprocess_exception);
    EXPECT_FALSE(test::exists(path_));
}

TEST_F(LockedJson, WaitsForAnotherProcessAndLeavesNoDescriptorToPrograms) {
    ASSERT_TRUE(FW::jsonFileDump(1, path_));
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    // Another process holds the lock until it is killed; so the writer cannot have got by it.
    const pid_t holder = test::startProcess([&] {
        const int lock = open(FW::getLockFile("a.json").c_str(), O_RDWR);
        struct flock whole = {};
        whole.l_type = F_WRLCK;
        const bool locked = fcntl(lock, F_SETLK, &whole) == 0;
        (void)(write(ready[1], "x", 1) == 1);
        pause();
        return locked ? 0 : 1;
    });
    char byte = 0;
    ASSERT_EQ(read(ready[0], &byte, 1), 1);
    const pid_t writer = test::startProcess([&] { return FW::jsonFileDump(2, path_) ? 0 : 1; });
    const std::string list = "cd /proc/" + std::to_string(writer) +
                             "/fd; for i in *; do case $(readlink $i) in */a.json.lock)"
                             " grep flags ../fdinfo/$i;; esac; done";
    std::string flags;
    EXPECT_TRUE(test::eventually([&] { return !(flags = test::shell(list)).empty(); }));
    EXPECT_NE(std::stoi(flags.substr(6), nullptr, 8) & O_CLOEXEC, 0) << flags;
    EXPECT_EQ(test::readFile(path_), "1\n");

    kill(holder, SIGKILL);
    EXPECT_EQ(test::waitFor(holder), -1);
    EXPECT_EQ(test::waitFor(writer), 0);
    EXPECT_EQ(test::readFile(path_), "2\n");
}

}  // namespace
