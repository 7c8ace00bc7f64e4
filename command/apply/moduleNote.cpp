#include "command/apply/moduleNote.h"

#include <libkmod.h>
#include <unistd.h>
#include <zamo/core.h>

#include <array>
#include <memory>
#include <string>

#include "command/apply/kernelModules.h"
#include "library/model/names.h"
#include "zamofirewall/modules.h"

namespace zamofw {
namespace {

struct ContextReleaser {
    void operator()(kmod_ctx* context) const { (void)kmod_unref(context); }
};
using Context = std::unique_ptr<kmod_ctx, ContextReleaser>;

struct ListReleaser {
    void operator()(kmod_list* list) const { (void)kmod_module_unref_list(list); }
};
using List = std::unique_ptr<kmod_list, ListReleaser>;

void saveMessage(void*, int, const char*, int, const char*, const char*, va_list) {}

bool isPresent(kmod_module* module) {
    const int state = kmod_module_get_initstate(module);
    return state == KMOD_MODULE_LIVE || state == KMOD_MODULE_BUILTIN || state == KMOD_MODULE_COMING;
}

// modprobe.d may say that something else is done in its place, or nothing.
bool isReplaced(const Context& context, const kmod_list* modules, const kmod_module* module) {
    if (kmod_module_get_install_commands(module) != nullptr) {
        return true;
    }
    kmod_list* rest = nullptr;
    (void)kmod_module_apply_filter(context.get(), KMOD_FILTER_BLACKLIST, modules, &rest);
    const List owner(rest);
    return rest == nullptr;
}

// "xt_mac.ko". A module that this kernel's tree does not have counts as missing.
bool isLoaded(const Context& context, const std::string& file) {
    const std::string name = file.substr(0, file.find('.'));
    kmod_list* found = nullptr;
    (void)kmod_module_new_from_lookup(context.get(), name.c_str(), &found);
    const List modules(found);
    kmod_list* entry = nullptr;
    kmod_list_foreach(entry, modules.get()) {
        kmod_module* const module = kmod_module_get_module(entry);
        const bool isThere = isPresent(module) || isReplaced(context, modules.get(), module);
        (void)kmod_module_unref(module);
        if (!isThere) {
            return false;
        }
    }
    return modules != nullptr || access(("/sys/module/" + name).c_str(), F_OK) == 0;
}

std::string missingModules() {
    std::string missing;
    const Context context(kmod_new(nullptr, nullptr));
    // A kernel without loadable modules has nothing to miss.
    if (context == nullptr || access("/proc/modules", F_OK) != 0) {
        return missing;
    }
    kmod_set_log_fn(context.get(), saveMessage, nullptr);
    for (const std::string& file : firewallModules()) {
        if (!file.empty() && !isLoaded(context, file)) {
            missing += (missing.empty() ? "" : ", ") + file;
        }
    }
    return missing;
}

bool saysNotLoaded() {
    std::array<char, 64> value = {};
    return VLIBCFileExist(FW::kModuleNoteFile) != 0 &&
           VLIBCFileGetKeyValue(
               FW::kModuleNoteFile, kModuleOwner, value.data(), static_cast<int>(value.size()), 0) >
               0 &&
           std::string(value.data()) == "no";
}

}  // namespace

Damages moduleNoteDamages(bool isInForce) {
    const std::string note = FW::kModuleNoteFile;
    if (isInForce && saysNotLoaded()) {
        return {{"modules-note",
                 note + " says that the firewall's kernel modules are not loaded, and its rules "
                        "are in force: switching it off would leave them loaded",
                 kRepairRemedy}};
    }
    // Asked first, because a missing note would be a line in the log.
    if (VLIBCFileExist(FW::kModuleNoteFile) == 0 ||
        !FW::ZAMO_IPTABLES_MODULES::isModuleLoad(kModuleOwner)) {
        return {};
    }
    const std::string missing = missingModules();
    if (missing.empty()) {
        return {};
    }
    return {{"modules-note",
             note +
                 " says that the firewall's kernel modules are loaded, and the kernel does not "
                 "have " +
                 missing + ": a reload would not load them",
             kRepairRemedy}};
}

}  // namespace zamofw
