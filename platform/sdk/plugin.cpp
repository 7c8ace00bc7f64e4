#include <zamo/sdk.h>

#include <sys/wait.h>
#include <syslog.h>

#include <cerrno>
#include <cstring>
#include <exception>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/base/childProcess.h"
#include "platform/base/export.h"
#include "platform/base/fail.h"
#include "platform/sdk/pluginFiles.h"

struct VLIBPlugin {
    std::string directory;
    std::map<std::string, std::string> variables;  // the whole "NAME=value" under NAME
};

namespace {

constexpr const char* kPluginRoot = "/usr/zamo/etc/plugin.d/";

std::vector<const char*> makeEnvironment(const VLIBPlugin& plugin) {
    std::vector<const char*> environment;
    environment.reserve(plugin.variables.size() + 1);
    for (const auto& [name, text] : plugin.variables) {
        environment.push_back(text.c_str());
    }
    environment.push_back(nullptr);
    return environment;
}

bool logFailure(const std::string& path, int status) {
    if (status < 0) {
        syslog(LOG_ERR,
               "zamosdk: plug-in %s could not be run: %s",
               path.c_str(),
               std::strerror(errno));
    } else if (WIFSIGNALED(status)) {
        syslog(
            LOG_ERR, "zamosdk: plug-in %s was ended by signal %d", path.c_str(), WTERMSIG(status));
    } else {
        syslog(LOG_ERR,
               "zamosdk: plug-in %s exited with status %d",
               path.c_str(),
               WEXITSTATUS(status));
    }
    return false;
}

bool runPlugin(const std::string& path, const char* action, const char* const* environment) {
    const char* const argv[] = {path.c_str(), action, nullptr};
    const int status = zamo::runChild(path.c_str(), argv, environment);
    return status == 0 || logFailure(path, status);
}

bool runPlugins(const VLIBPlugin& plugin, const char* action) {
    const std::vector<const char*> environment = makeEnvironment(plugin);
    const zamo::PluginFiles files = zamo::findPlugins(plugin.directory);
    bool good = files.complete;
    for (const std::string& name : files.runnable) {
        if (!runPlugin(plugin.directory + '/' + name, action, environment.data())) {
            good = false;
        }
    }
    return good;
}

const char* actionName(int action) {
    if (action == VLIB_PLUGIN_PRE) {
        return "pre";
    }
    return action == VLIB_PLUGIN_POST ? "post" : nullptr;
}

}  // namespace

// The hook's name already contains the category ("net/firewall_enable").
ZAMO_EXPORT int VLIBPluginSDKInit(const char* /*category*/,
                                  const char* hook,
                                  VLIBPlugin** handle) try {
    if (handle == nullptr) {
        return ZAMO_FAIL(ZAMO_ERR_BAD_PARAMETERS);
    }
    *handle = nullptr;
    if (hook == nullptr || !*hook) {
        return ZAMO_FAIL(ZAMO_ERR_BAD_PARAMETERS);
    }

    auto plugin = std::make_unique<VLIBPlugin>();
    plugin->directory = std::string(kPluginRoot) + hook;
    plugin->variables["PATH"] = zamo::kPathVariable;
    *handle = plugin.release();
    return 0;
} catch (const std::exception&) {
    return ZAMO_FAIL(ZAMO_ERR_NO_MEMORY);
}

ZAMO_EXPORT int VLIBPluginSetArg(VLIBPlugin* handle, const char* name, const char* value) try {
    if (handle == nullptr || name == nullptr || value == nullptr) {
        return ZAMO_FAIL(ZAMO_ERR_BAD_PARAMETERS);
    }
    const std::string variable = name;
    if (variable.empty() || variable.find('=') != std::string::npos) {
        return ZAMO_FAIL(ZAMO_ERR_BAD_PARAMETERS);
    }
    handle->variables[variable] = variable + '=' + value;
    return 0;
} catch (const std::exception&) {
    return ZAMO_FAIL(ZAMO_ERR_NO_MEMORY);
}

ZAMO_EXPORT int VLIBPluginAction(int action, VLIBPlugin* handle) try {
    const char* name = actionName(action);
    if (handle == nullptr || name == nullptr) {
        return ZAMO_FAIL(ZAMO_ERR_BAD_PARAMETERS);
    }
    return runPlugins(*handle, name) ? 0 : ZAMO_FAIL(ZAMO_ERR_SYSTEM);
} catch (const std::exception&) {
    return ZAMO_FAIL(ZAMO_ERR_NO_MEMORY);
}

ZAMO_EXPORT void VLIBPluginExit(VLIBPlugin* handle) {
    delete handle;
}
