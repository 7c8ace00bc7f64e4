#ifndef ZAMO_TESTS_SANDBOX_H
#define ZAMO_TESTS_SANDBOX_H

#include <functional>
#include <string>
#include <vector>

// Files, processes and the log of the private machine that the tests run in.

void writeFile(const std::string& path, const std::string& text, unsigned mode = 0644);
std::string readFile(const std::string& path);

// A new empty directory, which is removed at the end.
class Directory {
  public:
    explicit Directory(std::string path);
    ~Directory();
    std::string operator/(const std::string& name) const { return path_ + '/' + name; }

  private:
    std::string path_;
};

// Runs a shell command and expects it to succeed.
void shell(const std::string& command);

// False for a root who is the only user of its namespace.
bool canChangeOwners();

// The result of the action in a forked process, or -1 when that process was ended by a signal. One
// that hangs is ended after a minute.
int inChild(const std::function<int()>& action);

// Waits until the condition holds; false after a minute.
bool eventually(const std::function<bool()>& condition);

// The lines for the system log since the last call; they do not reach it.
std::vector<std::string> takeLog();

#endif
