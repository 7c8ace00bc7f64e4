// What the functions share with their caller: its threads and its descriptors.

#include <sys/resource.h>
#include <zamo/sdk.h>
#include <zamo/serviceconf.h>

#include <thread>

#include "tests/platform/host.h"

namespace {

TEST(LastError, BelongsToTheThreadAndCopiesTheFile) {
    std::string file(1000, 'x');
    VLIBCErrSetEx(5, file.c_str(), 77);
    file.assign(file.size(), 'y');
    std::thread([] {
        EXPECT_TRUE(VLIBCErrGet() == 0 && VLIBCErrorGetLine() == 0 && *VLIBCErrorGetFile() == '\0');
        VLIBCErrSetEx(6, nullptr, 1);
    }).join();
    EXPECT_TRUE(VLIBCErrGet() == 5 && VLIBCErrorGetLine() == 77);
    EXPECT_EQ(VLIBCErrorGetFile(), std::string(255, 'x'));
}

// What another thread prints would go into a file that took a standard stream's number. Here these
// numbers are the only ones left.
TEST(Descriptors, NeverTakeAStandardStreamsNumber) {
    const Directory place("/tmp/descriptors");
    const Directory services("/usr/zamo/etc/services.d");
    const Directory plugins("/usr/zamo/etc/plugin.d/net/hook");
    writeFile(services / "ssh.json", "{}");
    writeFile(place / "values", "key=value\n");
    VLIBPlugin* plugin = nullptr;
    ASSERT_EQ(VLIBPluginSDKInit("net", "net/hook", &plugin), 0);
    ZAMOFwServiceList* catalogue = nullptr;
    int lock = -1;
    const char* const argv[] = {"/bin/true", nullptr};
    const std::function<bool()> calls[] = {
        [] { return VLIBCFileCheckKeyValue("/tmp/descriptors/values", "key", "value", 0) == 1; },
        [] { return VLIBCFileSetKeyValue("/tmp/descriptors/new", "k", "v", 0) == 0; },
        [&] { return VLIBCFileLockTimeByFile("/tmp/descriptors/lock", 1, 0, &lock) == 1; },
        [] { return ZAMOFSMkdirP("/tmp/descriptors/directory", 0700) == 0; },
        [&] { return VLIBPluginAction(VLIB_PLUGIN_PRE, plugin) == 0; },
        [&] { return ZAMOFwServiceEnum(&catalogue) == 1; },
        [&] { return VLIBCPopen("r", argv) != nullptr; },
    };
    for (const auto& call : calls) {
        for (const rlim_t limit : {3U, 100U}) {
            const auto callWithFew = [&call, few = rlimit{limit, limit}] {
                for (int fd = 0; fd < 100; ++fd) {
                    close(fd);
                }
                return setrlimit(RLIMIT_NOFILE, &few) == 0 && call() ? 1 : 0;
            };
            EXPECT_EQ(inChild(callWithFew), limit == 3 ? 0 : 1) << "call " << &call - calls;
        }
    }
    VLIBPluginExit(plugin);
}

}  // namespace
