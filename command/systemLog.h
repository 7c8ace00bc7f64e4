// The system log, which the library's lines go to as well.
#ifndef COMMAND_SYSTEMLOG_H
#define COMMAND_SYSTEMLOG_H

#include <string>

namespace zamofw {

// From now on lines go to the system log under the name of the command, and with `shown` to
// standard error too.
void openSystemLog(bool shown);

// Sends a line that is not shown: it says what the caller knows.
void logUnseen(int priority, const std::string& line);

}  // namespace zamofw

#endif
