#include "command/systemLog.h"

#include <syslog.h>

namespace zamofw {
namespace {

bool isShown = false;

void open(bool shown) {
    openlog("zamofw", shown ? LOG_PERROR : 0, LOG_USER);
}

}  // namespace

void openSystemLog(bool shown) {
    isShown = shown;
    open(shown);
}

void logUnseen(int priority, const std::string& line) {
    open(/*shown=*/false);
    syslog(priority, "%s", line.c_str());
    open(isShown);
}

}  // namespace zamofw
