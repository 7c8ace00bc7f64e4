// Log lines have the form "module:line message", which the appliance's log readers expect.
//
// Every source file that logs defines its module once, as the constant kLogModule in its unnamed
// namespace. The module names are fixed; they need not match the name of the file.
#ifndef LIBRARY_LOGGING_LOG_H
#define LIBRARY_LOGGING_LOG_H

#include <syslog.h>

#define FW_LOG(priority, ...) FW_LOG_ENDED(priority, __VA_ARGS__, "")

// Logs a failure and evaluates to false, so that a function can log and return in one statement.
#define FW_FAILURE(...) (FW_LOG(LOG_ERR, __VA_ARGS__), false)

// In C++17 a macro's variable part must not be empty, so an empty text ends it.
#define FW_LOG_ENDED(priority, format, ...) \
    syslog((priority), "%s:%d " format "%s", kLogModule, __LINE__, __VA_ARGS__)

#endif
