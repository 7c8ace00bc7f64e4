// What a service tells the manager that has started it.
#ifndef COMMAND_SERVICEMANAGER_H
#define COMMAND_SERVICEMANAGER_H

#include <string>

namespace zamofw {

// "READY=1", "STATUS=...", each a line. Nothing happens when nobody is listening.
void tellServiceManager(const std::string& lines);

}  // namespace zamofw

#endif
