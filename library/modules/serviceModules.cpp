// Loading and unloading modules, and the file that says which service has its modules loaded.

#include <zamo/core.h>
#include <zamo/km.h>

#include <algorithm>
#include <array>
#include <boost/algorithm/string/join.hpp>
#include <cerrno>
#include <cstring>

#include "library/logging/log.h"
#include "library/model/names.h"
#include "zamofirewall/lockedJson.h"
#include "zamofirewall/modules.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "zamoIptablesModule";
constexpr const char* kLoaded = "yes";
constexpr const char* kUnloaded = "no";
constexpr int kNoteSize = 1024;
constexpr int kListCapacity = 1024;
constexpr int kExclusive = 1;
constexpr int kLockSeconds = 30;

using ModuleNames = std::vector<std::string>;

// Module names in the form that the platform takes.
class PlatformList {
  public:
    PlatformList() : list_(VLIBCSzListAlloc(kListCapacity)) {}
    ~PlatformList() { VLIBCSzListFree(list_); }
    PlatformList(const PlatformList&) = delete;
    PlatformList& operator=(const PlatformList&) = delete;

    [[nodiscard]] bool fill(const ModuleNames& modules) {
        if (list_ == nullptr) {
            return FW_FAILURE("Failed to allocate list[0x%04X %s:%d]",
                              static_cast<unsigned>(VLIBCErrGet()),
                              VLIBCErrorGetFile(),
                              VLIBCErrorGetLine());
        }
        for (const std::string& module : modules) {
            if (VLIBCSzListPush(&list_, module.c_str()) < 0) {
                return FW_FAILURE("Failed to VLIBCSzListPush()");
            }
        }
        return true;
    }
    [[nodiscard]] const VLIBCSzList* get() const { return list_; }

  private:
    VLIBCSzList* list_;
};

// Serialises the writers of the flags. If the lock is not acquired in time, the writer goes on
// without it: the flag must be stored in any case, or the modules would never be unloaded.
class NoteLock {
  public:
    NoteLock() {
        const std::string path = getLockFile(kModuleNoteFile);
        if (VLIBCFileLockTimeByFile(path.c_str(), kExclusive, kLockSeconds, &descriptor_) == 1) {
            return;
        }
        descriptor_ = -1;
        FW_LOG(LOG_ERR, "Failed to get lock [%s] error[%s]", path.c_str(), std::strerror(errno));
        FW_LOG(LOG_ERR, "Failed to get lock %s but still continue", path.c_str());
    }
    ~NoteLock() {
        if (descriptor_ >= 0 && VLIBCFileUnlockByFile(descriptor_) == 0) {
            FW_LOG(LOG_ERR, "Failed to unlock mail config lock. ");  // fixed text
        }
    }
    NoteLock(const NoteLock&) = delete;
    NoteLock& operator=(const NoteLock&) = delete;

  private:
    int descriptor_ = -1;
};

// fixed text: the message names the file where it announces the key, and the other way round
bool noteSet(const std::string& service, const char* value) {
    const NoteLock lock;
    if (VLIBCFileSetKeyValue(kModuleNoteFile, service.c_str(), value, 0) < 0) {
        return FW_FAILURE("failed to set key %s to file %s[0x%04X %s:%d]",
                          kModuleNoteFile,
                          service.c_str(),
                          static_cast<unsigned>(VLIBCErrGet()),
                          VLIBCErrorGetFile(),
                          VLIBCErrorGetLine());
    }
    return true;
}

bool insertFor(const std::string& service, const ModuleNames& modules) {
    if (!ZAMO_IPTABLES_MODULES::moduleInsert(service, modules)) {
        return FW_FAILURE("Failed to moduleInsert(%s, %s)",
                          service.c_str(),
                          boost::algorithm::join(modules, " ").c_str());
    }
    return true;
}

bool removeFor(const std::string& service, const ModuleNames& modules) {
    if (!ZAMO_IPTABLES_MODULES::moduleRemove(service, modules)) {
        return FW_FAILURE("Failed to moduleRemove(%s, %s)",
                          service.c_str(),
                          boost::algorithm::join(modules, " ").c_str());
    }
    return true;
}

bool coreGroupGet(ModuleNames& core) {
    if (!ZAMO_IPTABLES_MODULES::coreCommonModuleLoad(core)) {
        return FW_FAILURE("Failed to coreCommonModuleLoad()");
    }
    return true;
}

bool natGroupGet(ModuleNames& nat) {
    if (!ZAMO_IPTABLES_MODULES::natModuleLoad(nat)) {
        return FW_FAILURE("Failed to natModuleLoad()");
    }
    return true;
}

}  // namespace

bool ZAMO_IPTABLES_MODULES::moduleInsert(const std::string& service, const ModuleNames& modules) {
    PlatformList list;
    if (!list.fill(modules)) {
        return false;
    }
    if (VLIBIptablesModInsert(service.c_str(), list.get()) < 0) {
        return FW_FAILURE("Failed to VLIBIptablesModInsert()");
    }
    return noteSet(service, kLoaded);
}

bool ZAMO_IPTABLES_MODULES::moduleRemove(const std::string& service, const ModuleNames& modules) {
    PlatformList list;
    if (!list.fill(modules)) {
        return false;
    }
    if (VLIBIptablesModRemove(service.c_str(), list.get()) < 0) {
        return FW_FAILURE("Failed to VLIBIptablesModRemove()");
    }
    return noteSet(service, kUnloaded);
}

bool ZAMO_IPTABLES_MODULES::isModuleLoad(const std::string& service) {
    if (VLIBCFileExist(kModuleNoteFile) == 0) {
        return false;
    }
    std::array<char, kNoteSize> value = {};
    if (VLIBCFileGetKeyValue(kModuleNoteFile, service.c_str(), value.data(), kNoteSize, 0) < 0) {
        return FW_FAILURE("failed to get key %s from file %s[0x%04X %s:%d]",
                          kModuleNoteFile,
                          service.c_str(),
                          static_cast<unsigned>(VLIBCErrGet()),
                          VLIBCErrorGetFile(),
                          VLIBCErrorGetLine());
    }
    return std::strcmp(value.data(), kLoaded) == 0;
}

bool ZAMO_IPTABLES_MODULES::iptablesCoreModLoad(const std::string& service) {
    ModuleNames core;
    return coreGroupGet(core) && insertFor(service, core);
}

bool ZAMO_IPTABLES_MODULES::iptablesCoreModUnload(const std::string& service) {
    ModuleNames core;
    if (!coreGroupGet(core)) {
        return false;
    }
    std::reverse(core.begin(), core.end());
    return removeFor(service, core);
}

bool ZAMO_IPTABLES_MODULES::iptablesNATModLoad(const std::string& service) {
    ModuleNames core;
    ModuleNames nat;
    return coreGroupGet(core) && natGroupGet(nat) && insertFor(service, core) &&
           insertFor(service, nat);
}

bool ZAMO_IPTABLES_MODULES::iptablesNATModUnload(const std::string& service) {
    ModuleNames core;
    ModuleNames nat;
    if (!coreGroupGet(core) || !natGroupGet(nat)) {
        return false;
    }
    std::reverse(core.begin(), core.end());
    std::reverse(nat.begin(), nat.end());
    return removeFor(service, nat) && removeFor(service, core);
}

}  // namespace FW
