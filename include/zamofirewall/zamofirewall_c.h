/*
 * The firewall for programs in C.
 *
 * 1. Functions return 0 on success and -1 on failure, unless their comment says otherwise. A
 *    failure is in the system log.
 * 2. Texts end in a NUL. A null pointer is allowed only where the comment says so.
 * 3. Functions that run iptables or load modules need root. They start programs and wait for them,
 *    which may take seconds; each lock that another process holds adds up to 30 seconds.
 * 4. Nothing is kept between calls. Processes and threads may call at the same time.
 * 5. When a lock file cannot be opened at all, a C++ exception (boost::interprocess) leaves the
 *    functions that read or write profiles or settings. That ends a C program.
 * 6. While a reload has the policies of INPUT and FORWARD closed, SIGHUP, SIGINT, SIGQUIT and
 *    SIGTERM are blocked in the calling thread. They take effect when the policies are open again.
 *    A program with several threads must block them in the others as well.
 * 7. SIGCHLD may be ignored or handled, but no other thread may reap the library's children: if
 *    waitpid(-1, ...) takes the status of an iptables run, that run counts as failed, and the
 *    firewall is disabled. A program with threads should wait for its own children by number.
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
 * Removes a service from every rule of every profile, without a reload. NULL stands for the empty
 * name, which no service has.
 */
ZAMOFW_EXPORT int VLIBFwServRemoveRec(const char* service);

/*
 * Moves the rules and the default policy of an adapter to another name in every profile; if both
 * names are the same, they are removed. With `reload` 1, and no other value, the firewall is
 * reloaded if the default policy of the profile in force moved. NULL stands for the empty name.
 */
ZAMOFW_EXPORT int VLIBFwChangeAdatper(const char* oldAdapter, const char* newAdapter, int reload);

/*
 * Whether the profile in force lets every port of a service through on an adapter, or on all of
 * them if `adapter` is NULL or empty. Returns 1 if they are allowed, 0 if some are blocked, even
 * for some addresses only, and -1 on failure. If `service` is NULL, the platform's last error
 * (VLIBCErrGet) is 0x0D00, bad parameters.
 */
ZAMOFW_EXPORT int ZAMOFwPortsCheckAllowByAdapter(const char* adapter, const char* service);

/*
 * Reserves services for all adapters in every profile: denied if `allow` is 0, otherwise allowed.
 * `services` are names separated by commas; between two commas in a row is an empty name. With
 * `reload` 1, and no other value, the firewall is reloaded. If one service fails, those before it
 * stay reserved. If `services` is NULL or empty, the platform's last error is 0x0D00 and nothing is
 * logged.
 */
ZAMOFW_EXPORT int VLIBFwRuleReserveServInsert(const char* services, int allow, int reload);

/*
 * Load and unload groups of netfilter modules on behalf of `service`: the core group, or the core
 * and NAT groups. If `service` is NULL, they fail.
 */
ZAMOFW_EXPORT int ZAMOIptablesCodeModeLoad(const char* service);
ZAMOFW_EXPORT int ZAMOIptablesCoreModUnload(const char* service);
ZAMOFW_EXPORT int ZAMOIptablesNATModLoad(const char* service);
ZAMOFW_EXPORT int ZAMOIptablesNATModUnload(const char* service);

#ifdef __cplusplus
}
#endif

#endif
