#ifndef PLATFORM_SDK_PLUGINFILES_H
#define PLATFORM_SDK_PLUGINFILES_H

#include <set>
#include <string>

namespace zamo {

struct PluginFiles {
    std::set<std::string> runnable;  // the names in byte order, which is the order of running
    bool complete = true;  // false when the directory could not be read or a file is refused
};

// Finds the plug-ins in a directory and logs what must not be run. A missing directory is empty,
// and what is not an executable regular file is passed over.
[[nodiscard]] PluginFiles findPlugins(const std::string& directory);

}  // namespace zamo

#endif
