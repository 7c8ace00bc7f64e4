#include <fcntl.h>
#include <gtest/gtest.h>
#include <libkmod.h>
#include <unistd.h>
#include <zamo/km.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <map>
#include <sstream>
#include <string>

#include "tests/support/files.h"
#include "tests/support/processes.h"
#include "tests/support/systemLog.h"

// What the kernel would answer. Configuration, look-up and commands are libkmod's own.
namespace {

using namespace test;

struct FakeModule {
    int state = -ENOENT;
    int users = 0;
    int removal = 0;
};

bool kernelHasModules = true;
std::map<std::string, FakeModule> kernel;
std::string removed;

}  // namespace

#pragma GCC visibility push(default)
extern "C" {

int access(const char* path, int mode) noexcept {
    if (strcmp(path, "/proc/modules") != 0) {
        return faccessat(AT_FDCWD, path, mode, 0);
    }
    return kernelHasModules ? 0 : -1;
}

int kmod_module_get_initstate(const kmod_module* module) {
    return kernel[kmod_module_get_name(module)].state;
}

int kmod_module_get_refcnt(const kmod_module* module) {
    return kernel[kmod_module_get_name(module)].users;
}

int kmod_module_remove_module(kmod_module* module, unsigned) {
    removed += std::string(kmod_module_get_name(module)) + ' ';
    return kernel[kmod_module_get_name(module)].removal;
}

}  // extern "C"
#pragma GCC visibility pop

namespace {

class KernelModule : public testing::Test {
  protected:
    using Operation = int(const char*, const VLIBCSzList*);

    static int run(Operation* operation, const std::string& files) {
        VLIBCSzList* list = VLIBCSzListAlloc(4);
        std::istringstream words(files);
        for (std::string file; words >> file;) {
            EXPECT_EQ(VLIBCSzListPush(&list, file.c_str()), 0);
        }
        EXPECT_EQ(VLIBCSzListPush(&list, ""), 0);
        const int result = operation("web", list);
        VLIBCSzListFree(list);
        return result;
    }
    std::string ran() const { return readFile(place_ / "ran"); }

    const Directory place_{"/etc/modprobe.d"};
    SystemLog log_;
};

TEST_F(KernelModule, RunsInstallCommandsInListOrderUpToTheFirstFailure) {
    writeFile(place_ / "test.conf",
              "install xt_b echo b $MODPROBE_MODULE $SECRET >>/etc/modprobe.d/ran\n"
              "install xt_a echo a >>/etc/modprobe.d/ran\ninstall xt_bad exit 1\n"
              "install xt_listed echo listed >>/etc/modprobe.d/ran\nblacklist xt_listed\n");
    setenv("SECRET", "x", 1);
    kernel["xt_live"].state = KMOD_MODULE_LIVE;
    kernel["xt_builtin"].state = KMOD_MODULE_BUILTIN;
    EXPECT_EQ(run(VLIBIptablesModInsert, "xt_b.ko xt-a.ko xt_listed.ko xt_live.ko xt_builtin.ko"),
              0);
    EXPECT_EQ(ran(), "b xt_b\na\n");
    EXPECT_EQ(log_.take().size(), 0U);

    EXPECT_LT(run(VLIBIptablesModInsert, "xt_a.ko xt_bad.ko xt_b.ko"), 0);
    EXPECT_EQ(ran(), "b xt_b\na\na\n");
    const std::string line =
        "zamokm: web: module xt_bad: cannot be loaded: its modprobe.d command failed";
    EXPECT_EQ(log_.take(), std::vector{line});
}

TEST_F(KernelModule, TellsWhatToDoAboutAnUnknownModule) {
    EXPECT_LT(run(VLIBIptablesModInsert, "xt_unknown.ko"), 0);
    const auto log = log_.take();
    ASSERT_EQ(log.size(), 1U);
    for (const char* text :
         {"module xt_unknown: not among the modules of", "\"install xt_unknown /bin/true\""}) {
        EXPECT_NE(log[0].find(text), std::string::npos) << log[0];
    }
    kernelHasModules = false;
    EXPECT_EQ(run(VLIBIptablesModInsert, "xt_unknown.ko"), 0) << "a kernel without modules";
    kernelHasModules = true;
}

TEST_F(KernelModule, RemovesWhatNobodyHolds) {
    writeFile(place_ / "test.conf",
              "remove xt_own echo own >>/etc/modprobe.d/ran\nremove xt_fails exit 2\n");
    constexpr int kLive = KMOD_MODULE_LIVE;
    kernel["xt_free"] = {kLive, 0, 0};
    kernel["xt_held"] = {kLive, 2, 0};
    kernel["xt_raced"] = {kLive, 0, -EAGAIN};
    kernel["xt_gone"] = {kLive, 0, -ENOENT};
    kernel["xt_stuck"] = {kLive, 0, -EPERM};
    kernel["xt_builtin"] = {KMOD_MODULE_BUILTIN, 0, 0};
    EXPECT_EQ(
        run(VLIBIptablesModRemove,
            "xt_free.ko xt_held.ko xt_raced.ko xt_gone.ko xt_builtin.ko xt_absent.ko xt_own.ko"),
        0);
    EXPECT_EQ(removed, "xt_free xt_raced xt_gone ");
    EXPECT_EQ(log_.take().size(), 0U);

    for (const char* file : {"xt_stuck.ko", "xt_fails.ko"}) {
        EXPECT_LT(run(VLIBIptablesModRemove, std::string(file) + " xt_own.ko"), 0) << file;
        EXPECT_EQ(log_.take().size(), 1U) << file;
    }
    EXPECT_EQ(ran(), "own\n");
}

}  // namespace
