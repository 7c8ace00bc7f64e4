// Programs of the system, with their input and output in memory.
#ifndef COMMAND_APPLY_PROGRAM_H
#define COMMAND_APPLY_PROGRAM_H

#include <sys/types.h>

#include <string>
#include <string_view>
#include <vector>

#include "posix/descriptor.h"

namespace zamofw {

struct ProgramResult {
    int status = -1;  // the exit status; -1 when a signal ended the program
    int signal = 0;
    std::string output;
    std::string error;
};

// A file in memory with this text, to be a program's input as often as wanted. It never blocks and
// needs nobody who writes into a pipe meanwhile.
[[nodiscard]] posix::Descriptor memoryFile(std::string_view text);

// Two ends of a connection, each of which reads what is written into the other one. A started
// program gets an end only as its input. Throws Failure when it cannot be made.
struct Channel {
    Channel();
    posix::Descriptor ours;
    posix::Descriptor theirs;
};

// Whoever started us may have ignored SIGCHLD; then the status of a child would be lost.
void keepStatusOfChildren();

// A program that runs in a process group of its own, so that an interrupt from the terminal does
// not reach it, without a shell, with no variable but PATH and no descriptor but its standard
// streams.
class Program {
  public:
    // Throws Failure when it cannot be started. `command` begins with the program's path. `input`
    // is a channel, or a file that is read from its begin; -1 is no input. `inherited` are more
    // descriptors that the program keeps open, for locks that must not end before it. `variable` is
    // one more variable, NAME=VALUE.
    explicit Program(const std::vector<std::string>& command,
                     int input = -1,
                     const std::vector<int>& inherited = {},
                     const char* variable = nullptr);
    // Waits for it.
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    // Waits for its end. Throws Failure when it printed more than a program of its kind can.
    [[nodiscard]] ProgramResult finish();

    // Whether it, or a program that it started, holds an flock().
    [[nodiscard]] bool holdsLock() const;

  private:
    void wait();

    std::string path_;
    posix::Descriptor output_;
    posix::Descriptor error_;
    pid_t process_ = -1;
    int waitStatus_ = -1;
};

[[nodiscard]] ProgramResult runProgram(const std::vector<std::string>& command,
                                       int input = -1,
                                       const std::vector<int>& inherited = {});

}  // namespace zamofw

#endif
