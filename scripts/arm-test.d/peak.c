// Runs a program without its output, and prints the largest resident memory that it had, in KiB. It
// needs little memory itself, since the child's count begins before the program does.
#include <fcntl.h>
#include <stdio.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

int main(int argc, char** argv) {
    if (argc < 2) {
        return 2;
    }
    const pid_t child = fork();
    if (child == 0) {
        const int nothing = open("/dev/null", O_WRONLY);
        if (nothing >= 0 && dup2(nothing, STDOUT_FILENO) >= 0) {
            execv(argv[1], argv + 1);
        }
        _exit(127);
    }
    int status = 0;
    struct rusage usage;
    if (child < 0 || wait4(child, &status, 0, &usage) != child || status != 0) {
        fprintf(stderr, "peak: %s failed\n", argv[1]);
        return 1;
    }
    printf("%ld\n", usage.ru_maxrss);
    return 0;
}
