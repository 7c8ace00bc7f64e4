// What every answer gets to speak with: the global options, the two streams, and questions.
#ifndef COMMAND_CONSOLE_H
#define COMMAND_CONSOLE_H

#include <iosfwd>
#include <stdexcept>
#include <string>

namespace zamofw {

// The exit status of the command.
enum class Status : int {
    kDone = 0,          // done; yes; nothing to say against it
    kNo = 1,            // blocked, denied, differs, findings, not confirmed
    kWrongUse = 2,      // the words make no sense; nothing was done
    kFailed = 3,        // it could not be done
    kNotPermitted = 4,  // needs root
};

// Ends a call. The message says what and why, the remedy what to do about it; either may hold
// several lines. main() prints both on standard error.
class Failure : public std::runtime_error {
  public:
    Failure(Status status, const std::string& message, std::string remedy = "");

    [[nodiscard]] Status status() const { return status_; }
    [[nodiscard]] const std::string& remedy() const { return remedy_; }

  private:
    Status status_;
    std::string remedy_;
};

[[noreturn]] void wrongUse(const std::string& message, const std::string& remedy = "");
[[noreturn]] void failed(const std::string& message, const std::string& remedy = "");

// Throws unless the caller is root: kNotPermitted, naming what needs it.
void requireRoot(const std::string& what);

struct Console {
    bool json = false;        // one document on standard output instead of text
    bool yes = false;         // questions are answered with yes
    bool quiet = false;       // no log lines of the library, no progress
    bool color = false;       // the output is a terminal that takes colours
    bool isTerminal = false;  // standard output is a terminal
    bool canAsk = false;      // standard input and standard error are terminals
    std::ostream& out;
    std::ostream& err;

    // Asks, unless --yes answers already. False for anything but yes; without a terminal it says
    // that --yes is needed and is false.
    [[nodiscard]] bool confirm(const std::string& question) const;
};

}  // namespace zamofw

#endif
