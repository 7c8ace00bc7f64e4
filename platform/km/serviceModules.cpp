#include <zamo/km.h>

#include <exception>
#include <string>

#include "platform/base/export.h"
#include "platform/base/fail.h"
#include "platform/km/kernelModules.h"

namespace {

// "xt_mac" from "xt_mac.ko"; module names contain no dot.
std::string moduleName(const char* fileName) {
    const std::string name = fileName;
    return name.substr(0, name.find('.'));
}

using Operation = bool (zamo::KernelModules::*)(const std::string&) const;

int forEachModule(const char* service, const VLIBCSzList* files, Operation operation) try {
    if (service == nullptr || files == nullptr) {
        return ZAMO_FAIL(ZAMO_ERR_BAD_PARAMETERS);
    }
    if (!zamo::hasLoadableModules()) {
        return 0;
    }

    const zamo::KernelModules modules(service);
    for (int i = 0; i < VLIBCSzListCount(files); ++i) {
        const std::string name = moduleName(VLIBCSzListGet(files, i));
        if (!name.empty() && !(modules.*operation)(name)) {
            return ZAMO_FAIL(ZAMO_ERR_SYSTEM);
        }
    }
    return 0;
} catch (const std::exception&) {
    return ZAMO_FAIL(ZAMO_ERR_NO_MEMORY);
}

}  // namespace

ZAMO_EXPORT int VLIBIptablesModInsert(const char* service, const VLIBCSzList* modules) {
    return forEachModule(service, modules, &zamo::KernelModules::load);
}

ZAMO_EXPORT int VLIBIptablesModRemove(const char* service, const VLIBCSzList* modules) {
    return forEachModule(service, modules, &zamo::KernelModules::unload);
}
