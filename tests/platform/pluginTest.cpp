#include <zamo/sdk.h>

#include "tests/platform/host.h"

namespace {

class Plugins : public testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(VLIBPluginSDKInit("net", "net/hook", &handle_), 0); }
    void TearDown() override { VLIBPluginExit(handle_); }
    void addPlugin(const std::string& name, const std::string& command, unsigned mode = 0755) {
        writeFile(directory_ / name, "#!/bin/sh\necho " + name + " >>/tmp/plugins/ran\n" + command,
                  mode);
    }
    int run() { return VLIBPluginAction(VLIB_PLUGIN_PRE, handle_); }
    std::string ran() const { return readFile(output_ / "ran"); }

    const Directory directory_{"/usr/zamo/etc/plugin.d/net/hook"};
    const Directory output_{"/tmp/plugins"};
    VLIBPlugin* handle_ = nullptr;
    SystemLog log_;
};

TEST_F(Plugins, RunInByteOrderWithActionAndArguments) {
    addPlugin("b", "echo \"$*,$RESULT,$EMPTY,$PATH,$HOME\" >>/tmp/plugins/ran");
    addPlugin("a", "[ -z \"$(cat)\" ]");
    addPlugin("B", "");
    addPlugin("notes", "", 0644);
    shell("cd /usr/zamo/etc/plugin.d/net/hook; mkdir folder; ln -s nowhere dangling");
    EXPECT_EQ(VLIBPluginSetArg(handle_, "RESULT", "0"), 0);
    EXPECT_EQ(VLIBPluginSetArg(handle_, "RESULT", "a=-1 b"), 0);
    EXPECT_EQ(VLIBPluginSetArg(handle_, "EMPTY", ""), 0);
    EXPECT_LT(VLIBPluginSetArg(handle_, "", "x"), 0);
    EXPECT_LT(VLIBPluginSetArg(handle_, "A=B", "x"), 0);

    EXPECT_EQ(VLIBPluginAction(VLIB_PLUGIN_POST, handle_), 0);
    EXPECT_EQ(ran(), "B\na\nb\npost,a=-1 b,,/usr/sbin:/usr/bin:/sbin:/bin,\n");
    EXPECT_EQ(log_.take().size(), 0U);
    EXPECT_LT(VLIBPluginAction(3, handle_), 0);
    shell("rm -r /usr/zamo/etc/plugin.d/net/hook");
    EXPECT_EQ(run(), 0) << "a missing directory is empty";
}

TEST_F(Plugins, AllRunAndEachFailureIsLogged) {
    addPlugin("1", "exit 3");
    addPlugin("2", "kill -9 $$");
    writeFile(directory_ / "3", "no program", 0755);
    addPlugin("4", "[ \"$1\" = pre ]");
    EXPECT_LT(run(), 0);
    EXPECT_EQ(ran(), "1\n2\n4\n");
    const auto log = log_.take();
    ASSERT_EQ(log.size(), 3U);
    EXPECT_EQ(log[0], "zamosdk: plug-in /usr/zamo/etc/plugin.d/net/hook/1 exited with status 3");
}

TEST_F(Plugins, RefuseWhatOthersCouldHaveWritten) {
    writeFile(output_ / "target", "#!/bin/sh\necho target >>/tmp/plugins/ran\n", 0755);
    shell("ln -s /tmp/plugins/target " + (directory_ / "link"));
    addPlugin("good", "");
    EXPECT_EQ(run(), 0) << "a link to a safe file is followed";
    shell("chmod 1777 /usr/zamo/etc/plugin.d/net/hook");
    EXPECT_LT(run(), 0) << "unless anybody may have made it";
    shell("chmod 755 /usr/zamo/etc/plugin.d/net/hook");
    EXPECT_EQ(ran(), "good\ntarget\ngood\n");

    shell(canChangeOwners() ? "chown 4711 /tmp/plugins/target" : "chmod 757 /tmp/plugins/target");
    addPlugin("group", "", 0775);
    addPlugin("world", "", 0757);
    EXPECT_LT(run(), 0);
    EXPECT_EQ(ran(), "good\ntarget\ngood\ngood\n");
    EXPECT_EQ(log_.take().size(), 4U);
}

TEST(DirectoryCreation, MakesParentsAndFollowsNoLinkInASharedDirectory) {
    const Directory place("/tmp/made");
    const auto make = [&](const char* name) {
        return ZAMOFSMkdirP((place / name).c_str(), 0577) == 0 ? 0 : errno;
    };
    const mode_t mask = umask(0022);
    EXPECT_EQ(make("/a//b/c/"), 0);
    EXPECT_EQ(make("/a//b/c/"), 0);
    EXPECT_EQ(shell("cd /tmp/made; stat -c %a a/b/c a/b; : >file; ln -s a link"), "555\n755\n");
    EXPECT_EQ(make("file"), ENOTDIR);
    EXPECT_EQ(make("file/x"), ENOTDIR);
    EXPECT_EQ(make("link/trusted"), 0);
    EXPECT_TRUE(exists(place / "a/trusted"));
    shell("chmod 1777 /tmp/made");
    EXPECT_EQ(make("link/planted"), ENOTDIR);
    EXPECT_FALSE(exists(place / "a/planted"));
    umask(mask);
}

}  // namespace
