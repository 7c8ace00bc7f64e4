/*
 * The firewall for programs in C.
 *
 * 1. Results: 0 on success and -1 on failure, unless it is said otherwise. A failure is in the
 *    system log.
 * 2. Texts are NUL-terminated; a null pointer is allowed where it is said.
 * 3. Functions that run iptables or load modules need root. They start programs and wait for them,
 *    so that they may take seconds; waiting for a lock adds at most 30 seconds a file.
 * 4. No state is kept between calls. Different processes may call at the same time; the threads of
 *    one process must take turns.
 * 5. When a lock file cannot be opened at all, a C++ exception (boost::interprocess) passes through
 *    those functions that read or write profiles and settings; a C program ends there.
 */
#ifndef ZAMOFIREWALL_ZAMOFIREWALL_C_H
#define ZAMOFIREWALL_ZAMOFIREWALL_C_H

#include "zamofirewall/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Repairs every profile after the catalogue of services has changed, then reloads the firewall.
 */
ZAMOFW_EXPORT int ZAMOFwRuleHup(void);

/* Switches the firewall off. */
ZAMOFW_EXPORT void ZAMOFwReset(void);

/*
 * Removes a service from every rule of every profile, without a reload. NULL is the empty name,
 * which no service has.
 */
ZAMOFW_EXPORT int VLIBFwServRemoveRec(const char* service);

/*
 * Moves the rules and the default policy of an adapter to another name in every profile; with equal
 * names they are removed. `reload` 1 (no other value) reloads the firewall when the default policy
 * of the profile in force moved. NULL is the empty name.
 */
ZAMOFW_EXPORT int VLIBFwChangeAdatper(const char* oldAdapter, const char* newAdapter, int reload);

/*
 * Whether the profile in force lets every port of a service through on an adapter; NULL or an empty
 * `adapter` asks for all of them. 1 allowed; 0 blocked, for some addresses or for all; -1 on
 * failure. For a NULL `service` the platform's last error (VLIBCErrGet) is 0x0D00, bad parameters.
 */
ZAMOFW_EXPORT int ZAMOFwPortsCheckAllowByAdapter(const char* adapter, const char* service);

/*
 * Reserves services for all adapters in every profile: they are allowed when `allow` is not 0, else
 * denied. `services` are names separated by commas; two commas in a row hold an empty name between
 * them. `reload` 1 (no other value) reloads the firewall. The services before one that fails stay
 * reserved. For a NULL or empty `services` the platform's last error is 0x0D00, and nothing is
 * logged.
 */
ZAMOFW_EXPORT int VLIBFwRuleReserveServInsert(const char* services, int allow, int reload);

/*
 * Load and unload the groups of netfilter modules on behalf of `service`: the core group, and the
 * core and NAT groups. NULL is refused.
 */
ZAMOFW_EXPORT int ZAMOIptablesCodeModeLoad(const char* service);
ZAMOFW_EXPORT int ZAMOIptablesCoreModUnload(const char* service);
ZAMOFW_EXPORT int ZAMOIptablesNATModLoad(const char* service);
ZAMOFW_EXPORT int ZAMOIptablesNATModUnload(const char* service);

#ifdef __cplusplus
}
#endif

#endif
