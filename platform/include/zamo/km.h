/*
 * libzamokm: loading and unloading of kernel modules.
 *
 * Both functions may be called from any thread and do not throw. They stop at the first module that
 * fails, log it, and leave what they have done. modprobe.d's settings apply: an `install` or
 * `remove` command runs in place of the module, and a blacklisted module is skipped and counts as
 * done.
 */
#ifndef ZAMO_KM_H
#define ZAMO_KM_H

#include <zamo/core.h>

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Loads each module, given as its file name (xt_mac.ko), in list order for `service`, which is only
 * named in log lines. Empty names are skipped; a built-in or loaded module is loaded already, and a
 * kernel without loadable modules has nothing to do. 0, or negative with the last error set, also
 * for a module that the kernel's tree does not have.
 */
int VLIBIptablesModInsert(const char* service, const VLIBCSzList* modules);

/*
 * Unloads each module in list order, under the same conventions. A module that is still in use, is
 * built in or is not loaded counts as unloaded.
 */
int VLIBIptablesModRemove(const char* service, const VLIBCSzList* modules);

#ifdef __cplusplus
}
#endif

#endif
