#include "tests/support/fakePlatform.h"

#include <dlfcn.h>
#include <unistd.h>
#include <zamo/core.h>
#include <zamo/km.h>
#include <zamo/netsdk.h>
#include <zamo/sdk.h>

#include <cstdio>
#include <string>

struct VLIBPlugin {
    std::string hook;
    std::map<std::string, std::string> arguments;
};

namespace test {
namespace {

FakePlatform instance;
constexpr const char* kExecutionLock = "/tmp/firewall_iptables_exec.lock";
int executionLockDescriptor = -1;

// -1 for an event that fails, else 0.
int record(const std::string& event) {
    if (instance.onEvent) {
        instance.onEvent(event);
    }
    instance.events.push_back(event);
    return instance.fails && instance.fails(event) ? -1 : 0;
}

int recordModules(const std::string& what, const char* service, const VLIBCSzList* modules) {
    std::string event = what + " " + service + ":";
    for (int i = 0; VLIBCSzListGet(modules, i) != nullptr; ++i) {
        event += std::string(" ") + VLIBCSzListGet(modules, i);
    }
    return record(event);
}

template <typename Function>
Function* realFunction(Function*, const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

FakePlatform& platform() { return instance; }

void clearPlatform() {
    instance = FakePlatform();
    instance.interfaces = {"eth0", "eth1"};
    VLIBCErrSetEx(0, "", 0);
}

}  // namespace test

using test::platform;
using test::record;

// The libraries find these functions only if the program exports them.
#pragma GCC visibility push(default)

extern "C" {

int VLIBCExecv(const char*, const char* const argv[], int) {
    std::string line;
    for (int i = 0; argv[i] != nullptr; ++i) {
        line += (i == 0 ? "" : " ") + std::string(argv[i]);
    }
    return record(line);
}

FILE* VLIBCPopen(const char* mode, const char* const argv[]) {
    const bool isQuery = std::string(argv[0]) == "/usr/zamo/sbin/zamonetdtool" &&
                         std::string(argv[1]) == "--get-ipv6-router-interface" && *mode == 'r';
    const std::string interface = isQuery ? argv[2] : "";
    if (record("tool " + interface) < 0 || !isQuery) {
        return nullptr;
    }
    const auto router = platform().routers.find(interface);
    const std::string answer = router == platform().routers.end() ? interface : router->second;
    if (platform().openAnswer) {
        return platform().openAnswer(answer);
    }
    FILE* stream = std::tmpfile();
    std::fputs(answer.c_str(), stream);
    std::rewind(stream);
    return stream;
}

int VLIBCPclose(FILE* stream) { return std::fclose(stream); }

int VLIBNetGetInterfaceInfo(VLIBNetInterface* records, int capacity, int kind) {
    if (platform().interfacesFail || kind != 8) {
        VLIBCErrSetEx(0x0D00, "fake.c", 7);
        return -3;
    }
    int count = 0;
    for (const std::string& name : platform().interfaces) {
        if (count < capacity) {
            name.copy(records[count++].name, sizeof records->name);
        }
    }
    return count;
}

int ZAMOPPPoeIntfGet(char* buffer, int size) {
    std::snprintf(buffer, static_cast<std::size_t>(size), "%s", platform().pppoe.c_str());
    return platform().pppoeFails ? -1 : 0;
}

// The platform does not promise that an empty text is no address: callers must check for it.
int BlVLIBIsIpAddr(const char* text) {
    static auto* const real = test::realFunction(BlVLIBIsIpAddr, "BlVLIBIsIpAddr");
    return *text == '\0' ? 1 : real(text);
}

int BlVLIBIsv6IpAddrValid(const char* text) {
    static auto* const real = test::realFunction(BlVLIBIsv6IpAddrValid, "BlVLIBIsv6IpAddrValid");
    return *text == '\0' ? 1 : real(text);
}

int VLIBIptablesModInsert(const char* service, const VLIBCSzList* modules) {
    return test::recordModules("insert", service, modules);
}

int VLIBIptablesModRemove(const char* service, const VLIBCSzList* modules) {
    return test::recordModules("remove", service, modules);
}

int VLIBPluginSDKInit(const char* category, const char* hook, VLIBPlugin** handle) {
    *handle = new VLIBPlugin{hook, {{"category", category}}};
    return 0;
}

int VLIBPluginSetArg(VLIBPlugin* handle, const char* name, const char* value) {
    handle->arguments[name] = value;
    return 0;
}

int VLIBPluginAction(int action, VLIBPlugin* handle) {
    return record(handle->hook + (action == 4 ? " before " : " after ") +
                  handle->arguments["RESULT"]);
}

void VLIBPluginExit(VLIBPlugin* handle) { delete handle; }

int VLIBCFileLockTimeByFile(const char* path, int exclusive, int seconds, int* fd) {
    static auto* const real =
        test::realFunction(VLIBCFileLockTimeByFile, "VLIBCFileLockTimeByFile");
    const bool isExecutionLock = std::string(path) == test::kExecutionLock;
    if (isExecutionLock && record("lock") < 0) {
        return 0;
    }
    const int locked = real(path, exclusive, seconds, fd);
    if (isExecutionLock) {
        test::executionLockDescriptor = *fd;
    }
    return locked;
}

int VLIBCFileUnlockByFile(int fd) {
    static auto* const real = test::realFunction(VLIBCFileUnlockByFile, "VLIBCFileUnlockByFile");
    const bool isExecutionLock = fd == test::executionLockDescriptor;
    if (isExecutionLock) {
        test::executionLockDescriptor = -1;
    }
    const bool fails = isExecutionLock && record("unlock") < 0;
    return real(fd) != 0 && !fails ? 1 : 0;
}

}  // extern "C"

#pragma GCC visibility pop
