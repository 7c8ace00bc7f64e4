#include <libkmod.h>
#include <zamo/km.h>

#include <cstdlib>
#include <map>

#include "tests/platform/host.h"

// What the kernel would answer. Configuration, look-up and commands are libkmod's own.
namespace {

struct FakeModule {
    int state = -ENOENT;
    int users = 0;
    int removal = 0;
};

int accessToModules = 0;  // -1 for a kernel without modules
std::map<std::string, FakeModule> kernel;
std::string removed;

}  // namespace

#pragma GCC visibility push(default)
extern "C" {

int access(const char* path, int mode) noexcept {
    const bool isFaked = std::string(path) == "/proc/modules";
    return isFaked ? accessToModules : faccessat(AT_FDCWD, path, mode, 0);
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

    static int run(Operation* operation, const std::vector<std::string>& names) {
        VLIBCSzList* list = VLIBCSzListAlloc(4);
        for (const std::string& name : names) {
            EXPECT_EQ(VLIBCSzListPush(&list, (name + ".ko").c_str()), 0);
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
    EXPECT_EQ(run(VLIBIptablesModInsert, {"xt_b", "xt-a", "xt_listed", "xt_live", "xt_builtin"}),
              0);
    EXPECT_EQ(ran(), "b xt_b\na\n");
    EXPECT_EQ(log_.take().size(), 0U);

    EXPECT_LT(run(VLIBIptablesModInsert, {"xt_a", "xt_bad", "xt_b"}), 0);
    EXPECT_EQ(ran(), "b xt_b\na\na\n");
    const std::vector<std::string> lines = {
        "zamokm: web: module xt_bad: cannot be loaded: its modprobe.d command failed"};
    EXPECT_EQ(log_.take(), lines);
}

TEST_F(KernelModule, TellsWhatToDoAboutAnUnknownModule) {
    EXPECT_LT(run(VLIBIptablesModInsert, {"xt_unknown"}), 0);
    const auto log = log_.take();
    ASSERT_EQ(log.size(), 1U);
    EXPECT_NE(log[0].find("module xt_unknown: not among the modules of"), std::string::npos);
    EXPECT_NE(log[0].find("\"install xt_unknown /bin/true\""), std::string::npos) << log[0];
    accessToModules = -1;
    EXPECT_EQ(run(VLIBIptablesModInsert, {"xt_unknown"}), 0);
    accessToModules = 0;
}

TEST_F(KernelModule, RemovesWhatNobodyHolds) {
    writeFile(place_ / "test.conf",
              "remove xt_own echo own >>/etc/modprobe.d/ran\nremove xt_fails exit 2\n");
    constexpr int kLive = KMOD_MODULE_LIVE;
    kernel = {{"xt_free", {kLive, 0, 0}},        {"xt_held", {kLive, 2, 0}},
              {"xt_raced", {kLive, 0, -EAGAIN}}, {"xt_gone", {kLive, 0, -ENOENT}},
              {"xt_stuck", {kLive, 0, -EPERM}},  {"xt_builtin", {KMOD_MODULE_BUILTIN, 0, 0}}};
    EXPECT_EQ(run(VLIBIptablesModRemove, {"xt_free", "xt_held", "xt_raced", "xt_gone", "xt_builtin",
                                          "xt_absent", "xt_own"}),
              0);
    EXPECT_EQ(removed, "xt_free xt_raced xt_gone ");
    EXPECT_EQ(log_.take().size(), 0U);
    for (const std::string file : {"xt_stuck", "xt_fails"}) {
        EXPECT_LT(run(VLIBIptablesModRemove, {file, "xt_own"}), 0) << file;
        EXPECT_EQ(log_.take().size(), 1U) << file;
    }
    EXPECT_EQ(ran(), "own\n");
}

}  // namespace
