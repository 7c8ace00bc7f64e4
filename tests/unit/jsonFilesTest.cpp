// JSON files and their lock files, whatever the program that calls has, and whoever was there
// before it.

#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <locale>
#include <new>

#include "tests/support/processes.h"
#include "tests/support/store.h"
#include "tests/support/systemCalls.h"
#include "tests/support/systemLog.h"
#include "zamofirewall/zamofirewall.h"

namespace fs = std::filesystem;

namespace {

// How many allocations succeed before all fail; negative: none fails.
thread_local long allocationsLeft = -1;

}  // namespace

__attribute__((visibility("default"))) void* operator new(std::size_t size) {
    static auto* const real = reinterpret_cast<void* (*)(std::size_t)>(
        dlsym(RTLD_NEXT, sizeof(std::size_t) == sizeof(unsigned) ? "_Znwj" : "_Znwm"));
    if (allocationsLeft == 0) {
        throw std::bad_alloc();
    }
    allocationsLeft -= allocationsLeft > 0 ? 1 : 0;
    return real(size);
}

namespace {

using Lines = std::vector<std::string>;

const std::string kPath = std::string(test::kStore) + "a.json";
const std::string kLockDirectory = "/run/lock/firewall";
const std::string kLock = kLockDirectory + "/a.json.lock";

class JsonFiles : public testing::Test {
  protected:
    JsonFiles() { test::clearFiles(); }

    test::SystemLog log_;
};

TEST_F(JsonFiles, SayWhyTheyCannotBeRead) {
    Json::Value value;
    const Lines unparsable = {"utils: Failed to parse Json value of " + kPath};
    for (const std::string& text :
         {std::string(), std::string("{'a': 1}"), std::string(5000, '[')}) {
        test::writeFile(kPath, text);
        EXPECT_FALSE(FW::jsonFileLoad(value, kPath)) << text;
        EXPECT_EQ(log_.take(), unparsable) << text;
    }
    fs::remove(kPath);
    fs::create_directory(kPath);
    EXPECT_FALSE(FW::jsonFileLoad(value, kPath));
    EXPECT_EQ(log_.take(), unparsable);
}

TEST_F(JsonFiles, StayAsTheyWereWhenTheNewOneCannotBeWrittenWhole) {
    const std::string directory = std::string(test::kStore) + "small/";
    const std::string path = directory + "b.json";
    fs::create_directory(directory);
    ASSERT_EQ(mount("small", directory.c_str(), "tmpfs", 0, "size=16k"), 0);
    EXPECT_TRUE(FW::jsonFileDump(test::json("{'b': [1, 2], 'a': 'x'}"), path));
    EXPECT_FALSE(FW::jsonFileDump(std::string(100000, 'x'), path));
    EXPECT_EQ(log_.take(), Lines{"utils: Failed to rename to " + path});
    EXPECT_EQ(test::readFile(path), "{\n   \"a\" : \"x\",\n   \"b\" : [ 1, 2 ]\n}\n");
    EXPECT_FALSE(test::exists(path + ".tmp")) << "it would keep the disk full";
    EXPECT_EQ(umount(directory.c_str()), 0);

    fs::create_directories(path + "/x");
    EXPECT_FALSE(FW::jsonFileDump(1, path));
    EXPECT_EQ(log_.take(), Lines{"utils: Failed to rename to " + path});
    EXPECT_TRUE(test::exists(path + ".tmp"));
}

TEST_F(JsonFiles, HaveLockFilesNamedAfterThem) {
    EXPECT_EQ(FW::getLockFile("/a/b/x.json"), "/var/lock/firewall/x.json.lock");
    EXPECT_TRUE(test::exists(kLockDirectory + "/x.json.lock"));
    EXPECT_EQ(FW::getLockFile("/" + std::string(1012, 'd') + "/123456789012"),
              "/var/lock/firewall/123456789.lock");
    EXPECT_EQ(log_.take(), Lines{});

    ASSERT_EQ(mount("ro", kLockDirectory.c_str(), "tmpfs", MS_RDONLY, ""), 0);
    EXPECT_EQ(FW::getLockFile("x.json"), "/tmp/x.json.lock");
    EXPECT_EQ(umount(kLockDirectory.c_str()), 0);
    fs::remove_all(kLockDirectory);
    test::writeFile(kLockDirectory, "");
    EXPECT_EQ(FW::getLockFile("x.json"), "/tmp/x.json.lock");
    EXPECT_EQ(log_.take(), (Lines{"debug utils: Failed to create path: Read-only file system",
                                  "debug utils: Failed to create path: Not a directory"}));
}

struct stat statusOf(const std::string& path) {
    struct stat status = {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    return status;
}

// Neither the directory nor what is in it may be used by others.
void expectSafeLock() {
    EXPECT_TRUE(FW::jsonFileDump(1, kPath));
    EXPECT_TRUE(S_ISDIR(statusOf(kLockDirectory).st_mode));
    EXPECT_EQ(statusOf(kLockDirectory).st_mode & 07U, 0U);
    EXPECT_EQ(statusOf(kLockDirectory).st_uid, 0U);
    EXPECT_EQ(statusOf(kLock).st_mode, S_IFREG | 0600U);
    EXPECT_EQ(statusOf(kLock).st_uid, 0U);
    EXPECT_FALSE(test::exists("/tmp/a.json.lock"));
}

TEST_F(JsonFiles, AreLockedSafelyWhereOtherUsersMayHaveBeenFirst) {
    const std::string target = "/run/lock/target";
    const std::string elsewhere = "/run/lock/elsewhere";
    test::writeFile(target, "keep", 0640);
    fs::create_directory(elsewhere);
    std::vector<std::function<void()>> intrusions = {
        [] {},
        [] { chmod(kLockDirectory.c_str(), 0777); },
        [] { test::writeFile(kLock, "", 0666); },
        [&] { fs::create_symlink(target, kLock); },
        [&] { fs::create_hard_link(target, kLock); },
        [] { EXPECT_EQ(mkfifo(kLock.c_str(), 0600), 0); },
        [&] {
            fs::remove_all(kLockDirectory);
            fs::create_directory_symlink(elsewhere, kLockDirectory);
        }};
    if (test::canChangeOwners()) {
        for (const std::string& path : {kLockDirectory, kLock}) {
            intrusions.emplace_back([path] {
                test::writeFile(kLock, "");
                EXPECT_EQ(chown(path.c_str(), 1234, 1234), 0);
            });
        }
    }
    for (std::size_t i = 0; i < intrusions.size(); ++i) {
        SCOPED_TRACE(i);
        fs::remove_all(kLockDirectory);
        (void)FW::getLockFile("other.json");
        intrusions[i]();
        EXPECT_EQ(FW::getLockFile(kPath), "/var/lock/firewall/a.json.lock");
        expectSafeLock();
    }
    EXPECT_TRUE(fs::is_empty(elsewhere));
    EXPECT_EQ(statusOf(target).st_mode & 07777U, 0640U);
    EXPECT_EQ(test::readFile(target), "keep");
}

TEST_F(JsonFiles, KeepOffTheStandardStreamsAndOutOfOtherPrograms) {
    // How many descriptors are standard streams or go to the programs that the process starts.
    const auto exposed = [] {
        int count = 0;
        for (int file = 0; file < 100; ++file) {
            const int flags = fcntl(file, F_GETFD);
            count += flags >= 0 && (file <= 2 || (flags & FD_CLOEXEC) == 0) ? 1 : 0;
        }
        return count;
    };
    const auto exposesNothing = [&exposed] {
        for (const int stream : {0, 1, 2}) {
            close(stream);
        }
        test::SystemCalls calls;
        int more = -1;
        calls.beforeSync([&, before = exposed()] { more = exposed() - before; });
        return FW::jsonFileDump(1, kPath) && more == 0;
    };
    EXPECT_EQ(test::inChild([&] { return exposesNothing() ? 0 : 1; }), 0);
}

TEST_F(JsonFiles, LeakNoDescriptorWhenMemoryRunsOut) {
    const Json::Value document = test::json("{'a': [1, 'text', {'b': 2.5}]}");
    ASSERT_TRUE(FW::jsonFileDump(document, kPath));
    const std::size_t open = test::namesIn("/proc/self/fd").size();
    for (const bool load : {false, true}) {
        bool done = false;
        for (long count = 0; !done; ++count) {
            Json::Value value;
            allocationsLeft = count;
            try {
                done = load ? FW::jsonFileLoad(value, kPath) : FW::jsonFileDump(document, kPath);
            } catch (const std::bad_alloc&) {
            }
            allocationsLeft = -1;
            ASSERT_EQ(test::namesIn("/proc/self/fd").size(), open) << load << " " << count;
        }
    }
    EXPECT_FALSE(test::exists(kPath + ".tmp"));
}

struct Grouped : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST_F(JsonFiles, AreTheSameInEveryLocale) {
    test::writeFile(kPath,
                    "{ // \"1.5 \n \"a\": [1.5, -0.25, 1.5e3, 2.5E-1, 1e2, 1234567, 1.795], "
                    "/* \" */ \"b\\\\\": \"1.5\\\" 2.5\"}");
    Json::Value expected;
    ASSERT_TRUE(FW::jsonFileLoad(expected, kPath));

    const std::locale before =
        std::locale::global(std::locale(std::locale::classic(), new Grouped));
    Json::Value read;
    EXPECT_TRUE(FW::jsonFileLoad(read, kPath));
    EXPECT_EQ(read, expected);
    Json::Value damaged;
    for (const char* wrong : {"[1.5.2]", "[1.5e]", "[-.]"}) {
        test::writeFile(kPath, wrong);
        EXPECT_FALSE(FW::jsonFileLoad(damaged, kPath)) << wrong;
    }
    EXPECT_TRUE(FW::jsonFileDump(read, kPath));
    const std::string name =
        FW::ZAMOFW_JSON_DB().profilePathNameGen(test::json("{'a': {'fileName': '1'}}"));
    std::locale::global(before);
    EXPECT_EQ(name.find_first_not_of("0123456789"), std::string::npos) << name;
    EXPECT_TRUE(FW::jsonFileLoad(read, kPath));
    EXPECT_EQ(read, expected);
}

}  // namespace
