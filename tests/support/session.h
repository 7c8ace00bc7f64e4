// Sessions: calls of the library and what comes of them, as text.
#ifndef TESTS_SUPPORT_SESSION_H
#define TESTS_SUPPORT_SESSION_H

#include <string>

#include "tests/support/systemLog.h"

namespace test {

// Empties the files, writes the services and modules of store.h, and clears the fake platform.
void clearHost();

// Runs commands after clearHost(). The outcome of a command is
//
//   RESULT OUTPUT > EVENT > EVENT ! LOG LINE ! LOG LINE
//
// lineText.h explains the events and the log lines. "store/" stands for the path of the store.
class Session {
  public:
    Session();

    // Runs "COMMAND; COMMAND..." and returns "OUTCOME; OUTCOME...", without empty outcomes.
    std::string run(const std::string& commands);

  private:
    std::string runOne(const std::string& command);

    SystemLog log_;
};

}  // namespace test

#endif
