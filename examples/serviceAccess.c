/*
 * Lets a network service ask for its ports, as its own start and stop scripts would do it.
 *
 *   service-access check SERVICE [ADAPTER]   is it reachable? prints the answer
 *   service-access allow SERVICE[,...]       reserve it in every profile, and reload
 *   service-access deny SERVICE[,...]
 *   service-access remove SERVICE            take it out of every profile, and reload
 */
#include <stdio.h>
#include <string.h>
#include <zamofirewall/zamofirewall_c.h>

static int check(const char* service, const char* adapter) {
    const int answer = ZAMOFwPortsCheckAllowByAdapter(adapter, service);
    if (answer < 0) {
        fprintf(stderr, "the firewall does not tell; see the system log\n");
        return 1;
    }
    printf("%s\n", answer == 1 ? "allowed" : "blocked");
    return 0;
}

static int report(int result) {
    if (result != 0) {
        fprintf(stderr, "failed; see the system log\n");
        return 1;
    }
    return 0;
}

int main(int argc, char** argv) {
    const int reload = 1;
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
