#include "platform/km/kernelModules.h"

#include <sys/utsname.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

#include "platform/base/childProcess.h"

namespace zamo {
namespace {

struct ModuleReleaser {
    void operator()(kmod_module* module) const { (void)kmod_module_unref(module); }
};
using ModulePtr = std::unique_ptr<kmod_module, ModuleReleaser>;

struct ListReleaser {
    void operator()(kmod_list* list) const { (void)kmod_module_unref_list(list); }
};
using ListPtr = std::unique_ptr<kmod_list, ListReleaser>;

// By default libkmod prints to standard error. Our own log lines report every failure.
void discardMessage(void*, int, const char*, int, const char*, const char*, va_list) {}

// Commands in modprobe.d are shell text by definition. 0, or the errno value that describes the
// failure.
int runCommand(const std::string& module, const char* command) {
    const std::string name = "MODPROBE_MODULE=" + module;
    const char* const environment[] = {kPathVariable, name.c_str(), nullptr};
    const char* const argv[] = {"/bin/sh", "-c", command, nullptr};
    const int status = runChild(argv[0], argv, environment);
    if (status < 0) {
        return errno;
    }
    return status == 0 ? 0 : ECANCELED;
}

// Called by libkmod in place of system(); no exception may pass through it.
int runInstallCommand(kmod_module* module, const char* command, void*) try {
    return -runCommand(kmod_module_get_name(module), command);
} catch (const std::exception&) {
    return -ENOMEM;
}

std::string describeError(int error) {
    return error == ECANCELED ? "its modprobe.d command failed" : strerror(error);
}

bool isPresent(const kmod_module* module) {
    const int state = kmod_module_get_initstate(module);
    return state == KMOD_MODULE_LIVE || state == KMOD_MODULE_BUILTIN;
}

bool canStay(const kmod_module* module) {
    const int state = kmod_module_get_initstate(module);
    return state < 0 || state == KMOD_MODULE_BUILTIN || kmod_module_get_refcnt(module) > 0;
}

// 0, or an errno value.
int removeModule(kmod_module* module) {
    if (const char* command = kmod_module_get_remove_commands(module); command != nullptr) {
        return runCommand(kmod_module_get_name(module), command);
    }
    if (canStay(module)) {
        return 0;
    }
    // It may have gained a user or been removed since the check.
    const int result = kmod_module_remove_module(module, 0);
    const bool done = result >= 0 || result == -EAGAIN || result == -EBUSY || result == -ENOENT;
    return done ? 0 : -result;
}

}  // namespace

bool hasLoadableModules() {
    return access("/proc/modules", F_OK) == 0;
}

KernelModules::KernelModules(std::string service)
    : service_(std::move(service)), context_(kmod_new(nullptr, nullptr)) {
    if (context_ == nullptr) {
        throw std::system_error(ENOMEM, std::generic_category());
    }
    kmod_set_log_fn(context_.get(), discardMessage, nullptr);
}

bool KernelModules::logProblem(const std::string& name, const std::string& problem) const {
    syslog(LOG_ERR, "zamokm: %s: module %s: %s", service_.c_str(), name.c_str(), problem.c_str());
    return false;
}

bool KernelModules::insert(kmod_module* module) const {
    const int result = kmod_module_probe_insert_module(
        module, KMOD_PROBE_APPLY_BLACKLIST, nullptr, runInstallCommand, nullptr, nullptr);
    // A positive result means that it is blacklisted.
    if (result >= 0) {
        return true;
    }
    return logProblem(kmod_module_get_name(module), "cannot be loaded: " + describeError(-result));
}

// The kernel may have a module whose file is gone, for instance after an upgrade.
bool KernelModules::acceptUnknown(const std::string& name) const {
    kmod_module* found = nullptr;
    if (kmod_module_new_from_name(context_.get(), name.c_str(), &found) >= 0) {
        const ModulePtr module(found);
        if (isPresent(module.get())) {
            return true;
        }
    }
    utsname kernel = {};
    (void)uname(&kernel);
    return logProblem(name,
                      std::string("not among the modules of kernel ") + kernel.release +
                          "; install it, or put the line \"install " + name +
                          " /bin/true\" into a file in /etc/modprobe.d to go on without it");
}

bool KernelModules::load(const std::string& name) const {
    kmod_list* found = nullptr;
    const int result = kmod_module_new_from_lookup(context_.get(), name.c_str(), &found);
    const ListPtr modules(found);
    if (result < 0) {
        return logProblem(name, "cannot be looked up: " + describeError(-result));
    }
    if (modules == nullptr) {
        return acceptUnknown(name);
    }

    kmod_list* entry = nullptr;
    kmod_list_foreach(entry, modules.get()) {
        const ModulePtr module(kmod_module_get_module(entry));
        if (!insert(module.get())) {
            return false;
        }
    }
    return true;
}

bool KernelModules::unload(const std::string& name) const {
    kmod_module* found = nullptr;
    const int result = kmod_module_new_from_name(context_.get(), name.c_str(), &found);
    const ModulePtr module(found);
    const int error = result < 0 ? -result : removeModule(module.get());
    return error == 0 || logProblem(name, "cannot be removed: " + describeError(error));
}

}  // namespace zamo
