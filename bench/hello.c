#include <stdio.h>

int main(void) {
    puts("eth0");
    return 0;
}
