/*
 * Opens the ports of a network service, as the service's own start and stop scripts would.
 *
 *   service-access check SERVICE [ADAPTER]   prints whether it is reachable
 *   service-access allow SERVICE[,...]       reserves it in every profile, and reloads
 *   service-access deny SERVICE[,...]
 *   service-access remove SERVICE            removes it from every profile, and reloads
 */
#include <stdio.h>
#include <string.h>
#include <syslog.h>
#include <zamofirewall/zamofirewall_c.h>

static int report(int result) {
    if (result != 0) {
        fprintf(stderr, "service-access: failed; the lines above say why\n");
        return 1;
    }
    return 0;
}

static int check(const char* service, const char* adapter) {
    const int answer = ZAMOFwPortsCheckAllowByAdapter(adapter, service);
    if (answer < 0) {
        return report(answer);
    }
    printf("%s\n", answer == 1 ? "allowed" : "blocked");
    return 0;
}

int main(int argc, char** argv) {
    const int reload = 1;
    /* Without this the library's lines reach the system log only, if there is one. */
    openlog("service-access", LOG_PERROR, LOG_USER);
    if (argc >= 3 && argv[2][0] == '\0') {
        fprintf(stderr, "service-access: the name of the service is empty\n");
        return 2;
    }
    if (argc >= 3 && argc <= 4 && strcmp(argv[1], "check") == 0) {
        return check(argv[2], argc == 4 ? argv[3] : NULL);
    }
    if (argc == 3 && strcmp(argv[1], "allow") == 0) {
        return report(VLIBFwRuleReserveServInsert(argv[2], 1, reload));
    }
    if (argc == 3 && strcmp(argv[1], "deny") == 0) {
        return report(VLIBFwRuleReserveServInsert(argv[2], 0, reload));
    }
    if (argc == 3 && strcmp(argv[1], "remove") == 0) {
        const int removed = VLIBFwServRemoveRec(argv[2]);
        return report(removed == 0 ? ZAMOFwRuleHup() : removed);
    }
    fprintf(stderr, "usage: service-access check|allow|deny|remove SERVICE [ADAPTER]\n");
    return 2;
}
