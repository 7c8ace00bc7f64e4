#ifndef PLATFORM_SDK_PLUGINFILES_H
#define PLATFORM_SDK_PLUGINFILES_H

#include <set>
#include <string>

namespace zamo {

struct PluginFiles {
    std::set<std::string> runnable;  // names in byte order: the order in which they run
    bool complete = true;            // false if the directory is unreadable or a file is refused
};

// Finds the plug-ins in a directory, and logs those that are refused. A missing directory counts as
// empty. Anything but an executable regular file is ignored.
[[nodiscard]] PluginFiles findPlugins(const std::string& directory);

}  // namespace zamo

#endif
