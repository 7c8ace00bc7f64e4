// Log lines: "module:line message", as the appliance's log readers know them.
//
// Every source file that logs states its module once, as a constant kLogModule in its unnamed
// namespace. The name is fixed for the log's readers and says nothing about the file.
#ifndef LIBRARY_LOGGING_LOG_H
#define LIBRARY_LOGGING_LOG_H

#include <syslog.h>

#define FW_LOG(priority, format, ...) \
    syslog((priority), "%s:%d " format, kLogModule, __LINE__, ##__VA_ARGS__)

// Logs a failure. The value is false, so that a function can log and return in one statement.
#define FW_FAILURE(format, ...) (FW_LOG(LOG_ERR, format, ##__VA_ARGS__), false)

#endif
