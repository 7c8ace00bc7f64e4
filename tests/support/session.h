// Sessions: what one does with the library, and what is seen of it, as text.
#ifndef TESTS_SUPPORT_SESSION_H
#define TESTS_SUPPORT_SESSION_H

#include <string>

#include "tests/support/systemLog.h"

namespace test {

// Runs commands and tells what came of them: the result and what the operation filled, then
// "> ..." for what the platform was asked for (fakePlatform.h), where the lines that always come
// together are one, and "! ..." for the system log (systemLog.h). "{text*3}" is the text thrice.
class Session {
  public:
    std::string run(const std::string& text);

  private:
    // The command "failEach COMMAND": runs it as often as it leads to events, each time with
    // another one failing, from the same settings and note of modules.
    std::string runFailingAtEach(const std::string& command);

    SystemLog log_;
};

}  // namespace test

#endif
