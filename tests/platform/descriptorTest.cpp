#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>
#include <zamo/core.h>
#include <zamo/sdk.h>
#include <zamo/serviceconf.h>

#include <string>

#include "tests/support/files.h"
#include "tests/support/processes.h"

namespace {

using namespace test;

// What another thread prints would go into a file that took a standard stream's number. Here these
// numbers are the only ones left.
TEST(Descriptors, NeverTakeAStandardStreamsNumber) {
    const Directory place("/tmp/descriptors");
    const Directory services("/usr/zamo/etc/services.d");
    const Directory plugins("/usr/zamo/etc/plugin.d/net/hook");
    writeFile(services / "ssh.json", "{}");
    writeFile(place / "values", "key=value\n");

    struct Row {
        const char* name;
        bool (*works)();
    };
    const Row rows[] = {
        {"read a value",
         [] { return VLIBCFileCheckKeyValue("/tmp/descriptors/values", "key", "value", 0) == 1; }},
        {"set a value",
         [] { return VLIBCFileSetKeyValue("/tmp/descriptors/new", "k", "v", 0) == 0; }},
        {"lock",
         [] {
             int fd = -1;
             return VLIBCFileLockTimeByFile("/tmp/descriptors/lock", 1, 0, &fd) == 1;
         }},
        {"create a directory",
         [] { return ZAMOFSMkdirP("/tmp/descriptors/directory", 0700) == 0; }},
        {"run plug-ins",
         [] {
             VLIBPlugin* plugin = nullptr;
             return VLIBPluginSDKInit("net", "net/hook", &plugin) == 0 &&
                    VLIBPluginAction(VLIB_PLUGIN_PRE, plugin) == 0;
         }},
        {"read the services",
         [] {
             ZAMOFwServiceList* catalogue = nullptr;
             return ZAMOFwServiceEnum(&catalogue) == 1;
         }},
        {"open a stream",
         [] {
             const char* const argv[] = {"/bin/true", nullptr};
             return VLIBCPopen("r", argv) != nullptr;
         }},
    };
    for (const Row& row : rows) {
        for (const rlim_t limit : {rlim_t{3}, rlim_t{100}}) {
            const int result = inChild([&row, limit] {
                const rlimit few = {limit, limit};
                for (int fd = 0; fd < 100; ++fd) {
                    close(fd);
                }
                return setrlimit(RLIMIT_NOFILE, &few) == 0 && row.works() ? 1 : 0;
            });
            EXPECT_EQ(result, limit == 3 ? 0 : 1) << row.name;
        }
    }
}

}  // namespace
