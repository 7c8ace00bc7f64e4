// Sessions: what one does with the library, and what is seen of it, as text.
#ifndef TESTS_SUPPORT_SESSION_H
#define TESTS_SUPPORT_SESSION_H

#include <string>

#include "tests/support/systemLog.h"

namespace test {

// Empty files but for the services and modules of store.h, and a new fake platform.
void clearHost();

// Runs commands on a new host. What came of a command is
//
//   RESULT WHAT-IT-FILLED > EVENT > EVENT ! LOG LINE ! LOG LINE
//
// The events are what the platform was asked for (fakePlatform.h); those that always come together
// are one. "store/" stands for the path of the store.
class Session {
  public:
    Session();

    // Runs "COMMAND; COMMAND...". A command that only prepares has no result.
    std::string run(const std::string& commands);

  private:
    std::string runOne(const std::string& command);

    SystemLog log_;
};

}  // namespace test

#endif
