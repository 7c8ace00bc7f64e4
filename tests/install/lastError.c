#include <stdio.h>

#include <zamo/core.h>
#include <zamofirewall/zamofirewall_c.h>

int main(void) {
    (void)ZAMOFwPortsCheckAllowByAdapter(NULL, NULL);
    printf("0x%04x\n", (unsigned)VLIBCErrGet());
    return 0;
}
